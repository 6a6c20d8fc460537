// The plug-in's dialog as the host's model describes it: every visible item at its own
// rectangle, pop-ups with their entries, lists with their rows. Nothing here decides what the
// dialog means: each action goes back to the plug-in, which changes the model, and the page
// draws the model it gets next.
'use strict';

const DialogView = (() => {
  function box(node, rect) {
    const [left, top, right, bottom] = rect;
    Object.assign(node.style, { left: `${left}px`, top: `${top}px`, width: `${right - left}px`,
      height: `${bottom - top}px` });
    return node;
  }

  function itemNode(item, send) {
    const disabled = !item.enabled;
    let node;
    switch (item.kind) {
      case 'button':
        node = document.createElement('button');
        node.type = 'button';
        node.textContent = item.label;
        node.disabled = disabled;
        node.addEventListener('click', () => send({ kind: 'press', item: item.number }));
        break;
      case 'radio':
      case 'checkbox': {
        node = document.createElement('label');
        const input = document.createElement('input');
        input.type = item.kind;
        input.checked = item.value !== 0;
        input.disabled = disabled;
        input.addEventListener('click', (event) => {
          event.preventDefault();   // the plug-in sets the value
          send({ kind: 'press', item: item.number });
        });
        node.append(input, item.label);
        break;
      }
      case 'popup': {
        node = document.createElement('label');
        const select = document.createElement('select');
        item.entries.forEach((text, index) => {
          const option = new Option(text, String(index + 1), false, index + 1 === item.value);
          select.add(option);
        });
        select.disabled = disabled;
        select.addEventListener('change', () => send({ kind: 'choose', item: item.number, number: select.value }));
        if (item.label) node.append(item.label);
        node.append(select);
        break;
      }
      case 'static':
        node = document.createElement('div');
        node.className = 'static';
        node.textContent = item.label;
        break;
      default:
        node = document.createElement('div');
        node.className = 'user';
    }
    if (disabled) node.classList.add('disabled');
    node.dataset.item = item.number;
    node.dataset.kind = item.kind;
    return box(node, item.rect);
  }

  function listNode(list, send) {
    const node = box(document.createElement('div'), list.view);
    node.className = 'list';
    node.dataset.list = list.index;
    list.rows.forEach((row, index) => {
      const cell = document.createElement('div');
      cell.textContent = row.text;
      cell.style.height = `${list.cellHeight}px`;
      cell.style.lineHeight = `${list.cellHeight}px`;
      cell.dataset.row = index;
      if (row.selected) cell.classList.add('selected');
      cell.addEventListener('click', () => send({ kind: 'row', item: list.index, number: index }));
      node.appendChild(cell);
    });
    return node;
  }

  // Draws `dialog` into `layer`, keeping the lists' scroll positions of the last drawing.
  function draw(layer, dialog, send) {
    const scrolls = [...layer.querySelectorAll('.list')].map((list) => list.scrollTop);
    layer.textContent = '';
    const win = document.createElement('div');
    win.className = 'window';
    win.setAttribute('role', 'dialog');
    const title = document.createElement('div');
    title.className = 'titlebar';
    const close = document.createElement('button');
    close.className = 'close-box';
    close.title = 'Close';
    close.addEventListener('click', () => send({ kind: 'close' }));
    title.append(close, dialog.title || 'Dialog');
    const content = document.createElement('div');
    content.className = 'content';
    content.style.width = `${dialog.width}px`;
    content.style.height = `${dialog.height}px`;
    for (const item of dialog.items) {
      if (item.visible) content.appendChild(itemNode(item, send));
    }
    dialog.lists.forEach((list) => content.appendChild(listNode(list, send)));
    win.append(title, content);
    if (dialog.problem) {
      const problem = document.createElement('div');
      problem.className = 'problem-line';
      problem.textContent = dialog.problem;
      win.appendChild(problem);
    }
    layer.appendChild(win);
    [...layer.querySelectorAll('.list')].forEach((list, index) => {
      list.scrollTop = scrolls[index] ?? 0;
    });
  }

  return { draw };
})();
