// What keldump-seq says of the sequence that is open: a row a finding, which opens its first frame.
import {rowHeightOf} from './tree.js';
import {VirtualList} from './virtual.js';

const MOST_ROWS = 8;  // at once
const BORDER = 1;     // below them, in pixels
const TYPING = 300;   // milliseconds until what is typed is used
const RANGE = /^-?\d+--?\d+$/;

export class SequenceView {
    // `parts`: elements by name. ask(entry, switches) gives a report, goTo(place) opens a frame.
    constructor(parts, ask, goTo) {
        Object.assign(this, {parts, ask, goTo, lines: [], places: []});
        const {rows, frames} = parts;
        this.list = new VirtualList(rows, rowHeightOf(rows), (row, element, i) => this.draw(row, element, i));
        rows.addEventListener('mousedown', event => this.pressed(event));
        rows.addEventListener('keydown', event => this.keyed(event));
        frames.addEventListener('input', () => {
            clearTimeout(this.typing);
            this.typing = setTimeout(() => this.changed(), TYPING);
        });
        this.show(undefined);
    }
    get text() {
        return this.report.text;
    }

    // An entry of the list; nothing where it is no sequence.
    show(entry) {
        if (entry?.report && entry === this.entry) return;
        this.entry = entry?.report && entry;
        this.parts.box.hidden = !this.entry;
        if (!this.entry) return;
        this.parts.frames.value = '';
        this.kinds = [...new Set(entry.report.findings.map(([kind]) => kind))].map(kind => this.choiceOf(kind));
        this.parts.kinds.replaceChildren(...this.kinds.map(({element}) => element));
        this.parts.kinds.hidden = this.kinds.length < 2;
        this.set(entry.report);
    }
    choiceOf(kind) {
        const element = document.createElement('label');
        element.className = 'switch';
        const input = document.createElement('input');
        input.type = 'checkbox';
        input.checked = true;
        input.addEventListener('change', () => this.changed());
        element.append(input, kind);
        return {element, input, kind};
    }
    async changed() {
        const {entry, kinds} = this;
        const frames = this.parts.frames.value.replaceAll(' ', '').replace('–', '-');
        const isWrong = frames !== '' && !RANGE.test(frames);
        const ignored = kinds.filter(({input}) => !input.checked).map(({kind}) => kind);
        const report = isWrong ? undefined : await this.ask(entry, [
            ...frames ? [`--frames=${frames}`] : [], ...ignored.length > 0 ? [`--ignore=${ignored.join()}`] : []]);
        if (entry !== this.entry) return;
        this.parts.frames.setAttribute('aria-invalid', !report);
        if (report) this.set(report);
    }
    set(report) {
        const start = report.name.length + 2;
        this.report = report;
        this.lines = report.text.trimEnd().split('\n').map(line => line.slice(start));
        this.places = report.findings.map(([, place]) => place);
        this.parts.summary.textContent = this.lines.pop();
        this.parts.summary.classList.toggle('broken', this.lines.length > 0);
        this.active = 0;
        const {rows} = this.parts;
        rows.hidden = this.lines.length === 0;
        rows.style.flexBasis = `${Math.min(this.lines.length, MOST_ROWS) * this.list.rowHeight + BORDER}px`;
        this.list.setCount(this.lines.length);
        this.list.moveTo(0);
    }
    refresh() {
        this.list.setRowHeight(rowHeightOf(this.parts.rows));
    }

    draw(row, element, i) {
        element.id = `${this.parts.rows.id}-${i}`;
        element.className = 'finding';
        element.classList.toggle('active', row === this.active);
        element.setAttribute('role', 'option');
        element.setAttribute('aria-selected', row === this.active);
        element.setAttribute('aria-posinset', row + 1);
        element.setAttribute('aria-setsize', this.lines.length);
        element.textContent = this.lines[row];
        element.title = this.lines[row];
        if (row === this.active) this.parts.rows.setAttribute('aria-activedescendant', element.id);
    }
    choose(row) {
        this.active = Math.max(0, Math.min(row, this.lines.length - 1));
        this.list.show(this.active);
    }
    pressed(event) {
        const row = this.list.rowOf(event.target);
        if (row < 0 || event.button !== 0) return;
        this.choose(row);
        this.goTo(this.places[row]);
    }
    keyed(event) {
        if (event.ctrlKey || event.metaKey || event.altKey) return;
        const steps = {ArrowDown: 1, ArrowUp: -1, PageDown: this.list.page, PageUp: -this.list.page, Home: -Infinity, End: Infinity};
        if (event.key in steps) this.choose(this.active + steps[event.key]);
        else if (event.key === 'Enter' || event.key === ' ') this.goTo(this.places[this.active]);
        else return;
        event.preventDefault();
    }
}
