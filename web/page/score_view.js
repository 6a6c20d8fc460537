// The score drawn from the host's entries (measures, staves, notes), used while the server
// cannot give the score as MusicXML for the engraver. Systems of measures, one five-line staff
// per staff; noteheads placed by their position in the measure and their key.
'use strict';

const ScoreView = (() => {
  const SVG = 'http://www.w3.org/2000/svg';
  const LINE_GAP = 8;
  const STAFF_HEIGHT = 4 * LINE_GAP;
  const STAFF_DISTANCE = 70;
  const LEFT = 90;
  const QUARTER_WIDTH = 52;
  const CYMBALS = new Set([42, 44, 46, 49, 51, 52, 53, 55, 57, 59]);
  // Half-spaces above the bottom line where a drum key is written.
  const DRUM_PLACES = { 35: 1, 36: 1, 37: 5, 38: 5, 39: 5, 40: 5, 41: 2, 42: 9, 43: 3, 44: -1, 45: 4, 46: 9,
    47: 6, 48: 7, 49: 10, 50: 8, 51: 8, 52: 10, 53: 8, 55: 10, 57: 10, 59: 8 };
  const STEPS = [0, 0, 1, 1, 2, 3, 3, 4, 4, 5, 5, 6];

  function element(name, attributes, parent) {
    const node = document.createElementNS(SVG, name);
    for (const [key, value] of Object.entries(attributes)) node.setAttribute(key, value);
    if (parent) parent.appendChild(node);
    return node;
  }

  function place(key, drum) {
    if (drum) return DRUM_PLACES[key] ?? 4;
    const diatonic = Math.floor(key / 12) * 7 + STEPS[key % 12];
    return diatonic - 37;   // E4 sits on the bottom line
  }

  function selected(selection, measure, slot) {
    return selection && measure >= selection.first && measure <= selection.last &&
      (selection.staff === 0 || selection.staff === slot);
  }

  // Draws `score` into `container`; onMeasure(measure, slot, shiftKey) on a click.
  function draw(container, score, selection, onMeasure) {
    container.textContent = '';
    const width = Math.max(container.clientWidth - 20, 600);
    const systems = [];
    let current = [];
    let used = 0;
    for (const measure of score.measures) {
      const w = Math.max(80, (measure.duration / 1024) * QUARTER_WIDTH);
      if (current.length && used + w > width - LEFT) {
        systems.push(current);
        current = [];
        used = 0;
      }
      current.push({ ...measure, width: w });
      used += w;
    }
    if (current.length) systems.push(current);
    const byStaff = score.staves.map((staff) => {
      const entries = new Map();
      for (const entry of staff.entries) {
        if (!entries.has(entry.measure)) entries.set(entry.measure, []);
        entries.get(entry.measure).push(entry);
      }
      return entries;
    });
    const systemHeight = score.staves.length * STAFF_DISTANCE + 30;
    const svg = element('svg', { width, height: systems.length * systemHeight + 20, role: 'img' }, container);
    systems.forEach((system, systemIndex) => {
      const top = 30 + systemIndex * systemHeight;
      score.staves.forEach((staff, staffIndex) => {
        const y = top + staffIndex * STAFF_DISTANCE;
        const bottom = y + STAFF_HEIGHT;
        const name = element('text', { x: 4, y: y + STAFF_HEIGHT / 2 + 4, class: 'staff-name' }, svg);
        name.textContent = staff.name || `Staff ${staff.slot}`;
        const systemWidth = system.reduce((sum, m) => sum + m.width, 0);
        for (let line = 0; line < 5; line++) {
          element('line', { x1: LEFT, x2: LEFT + systemWidth, y1: y + line * LINE_GAP, y2: y + line * LINE_GAP,
            class: 'staff-line' }, svg);
        }
        let x = LEFT;
        for (const measure of system) {
          if (staffIndex === 0) {
            const number = element('text', { x: x + 2, y: y - 14, class: 'measure-number' }, svg);
            number.textContent = measure.number;
          }
          const box = element('rect', { x, y: y - 12, width: measure.width, height: STAFF_HEIGHT + 24,
            class: 'measure-box' + (selected(selection, measure.number, staff.slot) ? ' selected' : ''),
            'data-measure': measure.number, 'data-staff': staff.slot }, svg);
          box.addEventListener('click', (event) => onMeasure(measure.number, staff.slot, event.shiftKey));
          const inner = measure.width - 18;
          for (const entry of byStaff[staffIndex].get(measure.number) || []) {
            const ex = x + 10 + (entry.position / measure.duration) * inner + (entry.layer ? 3 : 0);
            if (entry.rest) {
              element('rect', { x: ex, y: y + LINE_GAP * 1.5, width: 5, height: LINE_GAP, class: 'rest',
                'data-measure': measure.number, 'data-staff': staff.slot }, svg);
              continue;
            }
            for (const key of entry.keys) {
              const ny = bottom - place(key, staff.drum) * (LINE_GAP / 2);
              const attributes = { 'data-measure': measure.number, 'data-staff': staff.slot, 'data-key': key };
              if (staff.drum && CYMBALS.has(key)) {
                element('path', { d: `M${ex - 3} ${ny - 3}l6 6m0 -6l-6 6`, class: 'note cymbal', ...attributes }, svg);
              } else {
                element('ellipse', { cx: ex, cy: ny, rx: 4, ry: 3, class: 'note', ...attributes }, svg);
              }
            }
          }
          x += measure.width;
          element('line', { x1: x, x2: x, y1: y, y2: bottom, class: 'bar-line' }, svg);
        }
      });
    });
  }

  return { draw };
})();
