// The page: one tab, one score on the server. It shows the score, keeps the selection, starts
// the plug-in and, while it runs, shows what it asks and sends back the person's answers.
'use strict';

(() => {
  const session = sessionStorage.getItem('tamberlyne-session') ||
    (crypto.randomUUID ? crypto.randomUUID() : `tab-${Date.now()}-${Math.random().toString(36).slice(2)}`);
  sessionStorage.setItem('tamberlyne-session', session);

  const $ = (id) => document.getElementById(id);
  const scoreArea = $('score');
  const dialogLayer = $('dialog-layer');
  const alertLayer = $('alert-layer');
  let score = null;
  let scoreVersion = -1;
  let selection = null;   // {staff: 0 (every staff) or a slot, first, last, anchor}
  let state = null;
  let shownAsk = 'null';
  let polling = false;
  let answeredAt = 0;
  let recheck = null;

  function url(path, params = {}) {
    return `${path}?${new URLSearchParams({ session, ...params })}`;
  }

  async function call(method, path, params, body) {
    const response = await fetch(url(path, params), { method, body });
    const json = await response.json().catch(() => ({ error: `${response.status} ${response.statusText}` }));
    if (!response.ok) throw new Error(json.error || `${response.status}`);
    return json;
  }

  function say(text, problem = false) {
    $('status').textContent = text;
    $('status').classList.toggle('problem', problem);
  }

  function describeSelection() {
    if (!selection) return 'Click a measure, shift-click another to select a range.';
    const where = selection.staff === 0 ? 'every staff'
      : `staff "${score.staves[selection.staff - 1].name || selection.staff}"`;
    const measures = selection.first === selection.last ? `measure ${selection.first}`
      : `measures ${selection.first}–${selection.last}`;
    return `Selected: ${measures} of ${where}`;
  }

  // The engraver, loaded once from the page's own files; the score comes from the server as
  // MusicXML (score.musicxml, the bytes a download gives). Without the engraver the host's
  // entries are drawn instead (score_view.js).
  let engraver = null;
  let engraverMissing = false;
  function loadEngraver() {
    engraver = engraver || new Promise((resolve, reject) => {
      const script = document.createElement('script');
      script.src = '/verovio-toolkit-wasm.js';
      script.onerror = () => reject(new Error('the score engraver cannot be loaded'));
      script.onload = () => { verovio.module.onRuntimeInitialized = () => resolve(new verovio.toolkit()); };
      document.head.appendChild(script);
    });
    return engraver;
  }

  function selected(measure, slot) {
    return !!selection && measure >= selection.first && measure <= selection.last &&
      (selection.staff === 0 || selection.staff === slot);
  }

  // What the engraver read of each note, by the note's id: its pitch or place and duration.
  // One copy of the engraver's whole encoding, read in one go: asking the engraver note by note
  // took over a second for a 100-measure score. Its attribute values are plain words and
  // numbers, so a pattern reads them faster than an XML parser.
  function writtenNotes(toolkit) {
    const written = new Map();
    for (const [, attributes] of toolkit.getMEI().matchAll(/<note\b([^>]*)>/g)) {
      const note = {};
      for (const [, name, value] of attributes.matchAll(/([\w.:-]+)="([^"]*)"/g)) note[name] = value;
      written.set(note['xml:id'], `${note.pname || note.ploc || ''}${note.oct || note.oloc || ''}/${note.dur || ''}`);
    }
    return written;
  }

  // The engraver draws measures in score order, each holding its staves in score order: the
  // n-th drawn measure is the score's measure n. Each staff of each measure gets a box on top
  // that takes clicks and shows the selection. Every place is measured before any box is added,
  // so that the browser lays the drawing out once, not once per box.
  function markMeasures(toolkit) {
    const SVG = 'http://www.w3.org/2000/svg';
    const written = writtenNotes(toolkit);
    const staves = [];
    scoreArea.querySelectorAll('g.measure').forEach((measureGroup, index) => {
      measureGroup.querySelectorAll(':scope > g.staff').forEach((staffGroup, staffIndex) => {
        const lines = [...staffGroup.querySelectorAll(':scope > path')].map((line) => line.getBBox());
        const area = lines.length ? lines.reduce((a, b) => {
          const x = Math.min(a.x, b.x);
          const y = Math.min(a.y, b.y);
          return { x, y, width: Math.max(a.x + a.width, b.x + b.width) - x, height: Math.max(a.y + a.height, b.y + b.height) - y };
        }) : staffGroup.getBBox();
        staves.push({ staffGroup, measure: index + 1, slot: staffIndex + 1, area });
      });
    });
    for (const { staffGroup, measure, slot, area } of staves) {
      staffGroup.dataset.measure = measure;
      staffGroup.dataset.staff = slot;
      staffGroup.querySelectorAll('g.note').forEach((note) => {
        note.dataset.measure = measure;
        note.dataset.staff = slot;
        note.dataset.key = written.get(note.id) || '/';
      });
      const margin = Math.max(area.height / 3, 60);
      const box = document.createElementNS(SVG, 'rect');
      Object.entries({ x: area.x, y: area.y - margin, width: area.width, height: area.height + 2 * margin })
        .forEach(([key, value]) => box.setAttribute(key, value));
      box.setAttribute('class', `measure-box${selected(measure, slot) ? ' selected' : ''}`);
      box.dataset.measure = measure;
      box.dataset.staff = slot;
      staffGroup.appendChild(box);
      box.addEventListener('click', (event) => onMeasure(measure, slot, event.shiftKey));
    }
  }

  let engraved = null;   // the score version the drawing shows
  async function engrave() {
    const toolkit = await loadEngraver();
    if (engraved !== scoreVersion) {
      const scale = 40;
      // Without indenting, the drawing is half the text for the page to take in.
      toolkit.setOptions({ adjustPageHeight: true, breaks: 'auto', scale, footer: 'none', svgFormatRaw: true,
        pageWidth: Math.max(Math.round((scoreArea.clientWidth - 20) * 100 / scale), 1500) });
      // A multi-measure rest is drawn measure by measure, so that each measure can be selected.
      toolkit.loadData(score.musicxml.replace(/<multiple-rest[^>]*>[^<]*<\/multiple-rest>/g, ''));
      let pages = '';
      for (let page = 1; page <= toolkit.getPageCount(); page++) pages += toolkit.renderToSVG(page);
      scoreArea.innerHTML = pages;
      engraved = scoreVersion;
      markMeasures(toolkit);
    } else {
      scoreArea.querySelectorAll('rect.measure-box').forEach((box) =>
        box.classList.toggle('selected', selected(Number(box.dataset.measure), Number(box.dataset.staff))));
    }
    scoreArea.dataset.engraved = String(scoreVersion);
  }

  async function drawScore() {
    $('selection').textContent = describeSelection();
    $('score-name').textContent = score.name;
    if (score.musicxml && !engraverMissing) {
      try {
        await engrave();
        return;
      } catch (error) {
        engraverMissing = true;
        say(`${error.message}: the score is drawn without it`, true);
      }
    }
    ScoreView.draw(scoreArea, score, selection, onMeasure);
    scoreArea.dataset.engraved = String(scoreVersion);
  }

  function onMeasure(measure, slot, extend) {
    const everyStaff = document.querySelector('input[name="select-staves"]:checked').value === 'all';
    const staff = everyStaff ? 0 : slot;
    if (extend && selection && selection.staff === staff) {
      selection.first = Math.min(selection.anchor, measure);
      selection.last = Math.max(selection.anchor, measure);
    } else {
      selection = { staff, first: measure, last: measure, anchor: measure };
    }
    drawScore();
    updateButtons();
  }

  function updateButtons() {
    const running = !!(state && state.running);
    $('run').disabled = running || !selection || !!(state && state.busyElsewhere);
    $('run').title = state && state.busyElsewhere ? 'The plug-in is busy in another tab' : '';
    $('undo').disabled = running || !state || state.undo === 0;
    $('download').disabled = running || !score || !score.musicxml;
    $('redo').disabled = running || !state || state.redo === 0;
    $('listen').disabled = running || !state || !state.filled;
    $('demo').disabled = running;
  }

  // With `since` (the `changes` of the state shown), the server answers when the plug-in has
  // asked something new or finished.
  async function refresh(since) {
    state = await call('GET', '/api/state', since === undefined ? {} : { since });
    if (state.scoreVersion !== scoreVersion) {
      score = await call('GET', '/api/score');
      scoreVersion = state.scoreVersion;
      if (selection && selection.last > score.measures.length) selection = null;
      await drawScore();
    }
    showAsk(state.running ? state.ask : null);
    updateButtons();
    if (state.busyElsewhere && !recheck) {
      // Another tab runs the plug-in: look again until it has finished.
      recheck = setTimeout(() => { recheck = null; refresh().catch(() => {}); }, 1000);
    }
    return state;
  }

  async function answer(params) {
    answeredAt = performance.now();
    try {
      await call('POST', '/api/answer', params);
    } catch (error) {
      say(error.message, true);
    }
    poll();
  }

  function showAlert(ask) {
    const win = $('alert');
    win.className = `window ${ask.style}`;
    $('alert-text').textContent = ask.text;
    const buttons = alertLayer.querySelector('.alert-buttons');
    buttons.textContent = '';
    const choices = ask.question ? [['No', 'no'], ['Yes', 'yes']] : [['OK', 'ok']];
    for (const [label, kind] of choices) {
      const button = document.createElement('button');
      button.type = 'button';
      button.textContent = label;
      button.addEventListener('click', () => answer({ kind }));
      buttons.appendChild(button);
    }
    alertLayer.hidden = false;
    buttons.lastChild.focus();
  }

  function showAsk(ask) {
    const json = JSON.stringify(ask);
    if (json === shownAsk) return;
    shownAsk = json;
    alertLayer.hidden = !ask || ask.kind !== 'alert';
    // A dialog stays in sight under an alert it raised.
    if (!ask || ask.kind === 'dialog') dialogLayer.hidden = !ask;
    if (ask && ask.kind === 'alert') showAlert(ask);
    if (ask && ask.kind === 'dialog') {
      DialogView.draw(dialogLayer, ask, answer);
      showGrooveGrid(ask);
    }
  }

  // Audio the server renders (WAV), played in the page; when it cannot render (FluidSynth or
  // the sound font missing) its message, which names the package to install, is shown instead.
  async function playSound(path, params) {
    try {
      const response = await fetch(url(path, params));
      if (!response.ok) {
        const json = await response.json().catch(() => ({ error: `${response.status} ${response.statusText}` }));
        throw new Error(json.error);
      }
      const player = $('player');
      if (player.src) URL.revokeObjectURL(player.src);
      player.src = URL.createObjectURL(await response.blob());
      await player.play();
    } catch (error) {
      say(error.message, true);
    }
  }

  // Beside the dialog: the drum grid of the groove selected in its list, as `tamberlyne grooves
  // show` prints it, and a button to hear it.
  const grids = new Map();
  async function showGrooveGrid(dialog) {
    const row = dialog.lists.flatMap((list) => list.rows).find((candidate) => candidate.selected);
    const win = dialogLayer.querySelector('.window');
    if (!row || !win) return;
    const panel = document.createElement('div');
    panel.className = 'groove-grid';
    const play = document.createElement('button');
    play.type = 'button';
    play.textContent = 'Play';
    play.title = `Hear ${row.text}`;
    play.addEventListener('click', () => playSound('/api/groove-sound', { name: row.text }));
    const grid = document.createElement('pre');
    grid.textContent = grids.get(row.text) || '…';
    panel.append(play, grid);
    win.after(panel);
    if (!grids.has(row.text)) {
      try {
        const response = await fetch(url('/api/groove', { name: row.text }));
        const text = await response.text();
        grids.set(row.text, response.ok ? text : JSON.parse(text).error);
      } catch (error) {
        grids.set(row.text, error.message);
      }
      grid.textContent = grids.get(row.text);
    }
    panel.dataset.groove = row.text;
  }

  function reportRun(run) {
    if (!run) return;
    if (run.changed) {
      const measures = selection ? ` measures ${selection.first}–${selection.last}` : '';
      say(`Filled${measures}.`);
      return;
    }
    const told = run.alerts.filter((alert) => !alert.question).map((alert) => alert.text);
    const declined = run.alerts.find((alert) => alert.question && alert.answer !== 6);
    const why = told.join(' ') || (declined && `You answered No to "${declined.text}"`) || run.notes.join(' ') ||
      'The dialog was cancelled';
    say(`Nothing was filled: ${why}`, true);
  }

  async function poll() {
    if (polling) return;
    polling = true;
    try {
      let since;
      for (;;) {
        const current = await refresh(since);
        if (!current.running) break;
        since = current.changes;
      }
      reportRun(state.lastRun);
      if (answeredAt && state.lastRun && state.lastRun.changed) {
        document.body.dataset.lastFillMs = String(Math.round(performance.now() - answeredAt));
      }
      answeredAt = 0;
    } catch (error) {
      say(`The server does not answer: ${error.message}`, true);
    } finally {
      polling = false;
    }
  }

  async function act(path, params, done) {
    try {
      await call('POST', path, params);
      if (done) say(done);
    } catch (error) {
      say(error.message, true);
    }
    await refresh();
  }

  async function upload(file) {
    if (!file) return;
    say(`Reading ${file.name}…`);
    try {
      await call('POST', '/api/upload', { name: file.name }, file);
      selection = null;
      say(`Opened ${file.name}.`);
    } catch (error) {
      say(error.message, true);
    }
    await refresh();
  }

  $('run').addEventListener('click', async () => {
    say('The plug-in is running…');
    try {
      await call('POST', '/api/run', { first: selection.first, last: selection.last, staff: selection.staff });
    } catch (error) {
      say(error.message, true);
      return;
    }
    poll();
  });
  $('listen').addEventListener('click', () => playSound('/api/listen'));
  $('download').addEventListener('click', () => {
    const format = $('download-format').value;
    const link = document.createElement('a');
    link.href = url('/api/download', { format });
    link.download = `${score.name.replace(/\.(musicxml|mxl|xml)$/i, '')}.${format}`;
    document.body.appendChild(link);
    link.click();
    link.remove();
  });
  $('undo').addEventListener('click', () => act('/api/undo', {}, 'Undone.'));
  $('redo').addEventListener('click', () => act('/api/redo', {}, 'Redone.'));
  $('demo').addEventListener('click', () => { selection = null; act('/api/demo', {}, 'The demo score.'); });
  $('file').addEventListener('change', (event) => upload(event.target.files[0]));
  scoreArea.addEventListener('dragover', (event) => { event.preventDefault(); scoreArea.classList.add('dropping'); });
  scoreArea.addEventListener('dragleave', () => scoreArea.classList.remove('dropping'));
  scoreArea.addEventListener('drop', (event) => {
    event.preventDefault();
    scoreArea.classList.remove('dropping');
    upload(event.dataTransfer.files[0]);
  });
  document.addEventListener('keydown', (event) => {
    if (dialogLayer.hidden || !alertLayer.hidden || event.target.tagName === 'BUTTON') return;
    if (event.key === 'Enter') answer({ kind: 'press', item: 1 });
    if (event.key === 'Escape') answer({ kind: 'press', item: 2 });
  });
  window.addEventListener('resize', () => score && drawScore());
  document.querySelectorAll('input[name="select-staves"]').forEach((radio) =>
    radio.addEventListener('change', () => { selection = null; drawScore(); updateButtons(); }));

  poll();
})();
