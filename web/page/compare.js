// What differs between two files, side by side: what people say of them, then the fields of their dumps. A value goes to
// its line and bytes.
import {Runner, nameFor} from './pool.js';
import {safeName} from './safe.js';
import {rowHeightOf} from './tree.js';
import {VirtualList} from './virtual.js';

const SHOWN = 1000;  // characters of a value
const NOTHING = 'Nothing differs but positions, dates, identifiers and sizes.';
const NOTHING_AT_ALL = 'Nothing differs.';

const textElement = (name, className, text) => {
    const element = document.createElement(name);
    element.className = className;
    element.textContent = text;
    return element;
};

// How many words two values have in common at their start, and behind that at their end.
function commonWords(one, other) {
    const most = Math.min(one.length, other.length);
    let start = 0, end = 0;
    while (start < most && one[start] === other[start]) start++;
    while (end < most - start && one.at(-1 - end) === other.at(-1 - end)) end++;
    return [start, end];
}

// The parts of a value, what the other one has otherwise as a mark.
function partsOf(value, other) {
    const [own, others] = [value, other].map(text => text.split(/([^\p{L}\p{N}.]+)/u));
    const [start, end] = commonWords(own, others);
    const middle = own.slice(start, own.length - end).join('');
    return [own.slice(0, start).join(''), ...middle ? [textElement('mark', '', middle)] : [], own.slice(own.length - end).join('')];
}

export class Comparison {
    // `parts`: elements by name. goTo(one of the two, line, switches) shows a line of a dump.
    constructor(parts, goTo) {
        Object.assign(this, {parts, goTo, rows: [], shown: [], two: [], active: 0, side: 0});
        const {box, dialog, differing, all} = parts;
        this.list = new VirtualList(box, rowHeightOf(box), (row, element, i) => this.draw(row, element, i));
        this.runner = new Runner();
        box.addEventListener('mousedown', event => this.pressed(event));
        box.addEventListener('keydown', event => this.keyed(event));
        differing.addEventListener('change', () => this.filter());
        all.addEventListener('change', () => this.compare());
        dialog.addEventListener('close', () => {
            if (this.isRunning) this.runner.cancel();
        });
    }
    get text() {
        return this.report;
    }

    // Two of {file, path}; `switches` say how much of the dumps is compared.
    async show(two, switches) {
        const {heads, heading} = this.parts;
        this.two = two;
        this.switches = switches;
        const names = two.map(({path}) => safeName(path));
        heading.textContent = names.join('  ↔  ');
        heads.replaceChildren(...['Field', ...names].map(name => {
            const head = textElement('span', 'side', name);
            head.setAttribute('role', 'columnheader');
            head.title = name;
            return head;
        }));
        this.open();
        await this.compare();
    }
    open() {
        const {dialog, box} = this.parts;
        if (!dialog.open) dialog.showModal();
        this.refresh();
        box.focus();
    }
    close() {
        this.parts.dialog.close();
    }
    async compare() {
        this.say('Comparing …');
        this.runner.cancel();
        this.isRunning = true;
        const files = this.two.map(({file, path}) => ({file, name: nameFor(path)}));
        const switches = [...this.parts.all.checked ? ['--all'] : [], ...this.switches];
        const {error, hasChanged, status, told, message} = await this.runner.run('compare', {files, switches});
        this.isRunning = false;
        this.runner.cancel();  // its memory with it
        if (hasChanged) this.say('A file changed, or can no longer be read.');
        else if (error || status > 1) this.say(error || this.withNames(message.trim()));
        else this.take(told);
    }
    // The files' own names never reached the module.
    withNames(text) {
        return this.two.reduce((named, {path}, i) => named.replaceAll(`${'AB'[i]}/${nameFor(path)}`, () => path), text);
    }
    say(text) {
        this.report = '';
        this.rows = [{message: safeName(text)}];
        this.filter();
    }
    take({facts, rows, text}) {
        const names = this.two.map(({path}) => safeName(path));
        this.report = text && `--- ${names[0]}\n+++ ${names[1]}\n${text.slice(text.indexOf('\n', text.indexOf('\n') + 1) + 1)}`;
        this.rows = [{section: ['Facts']}, ...facts.map(([field, ...values]) => ({field, values, how: 'changed', lines: [0, 0], remark: ''})), {section: ['Dump']}];
        for (const row of rows) this.rows.push(Array.isArray(row) ? {section: row.length > 0 ? row : ['Dump']} : row);
        this.filter();
    }

    // Rows that are shown; sections where a row stands below them.
    filter() {
        const differing = this.parts.differing.checked;
        this.shown = [];
        let section;
        for (const row of this.rows) {
            if (row.section) {
                section = row;
                continue;
            }
            if (differing && row.how === '') continue;
            if (section) this.shown.push(section);
            section = undefined;
            this.shown.push(row);
        }
        if (this.shown.length === 0) this.shown.push({message: this.parts.all.checked ? NOTHING_AT_ALL : NOTHING});
        this.active = Math.max(0, this.shown.findIndex(row => row.values));
        this.list.setCount(this.shown.length);
        this.parts.box.setAttribute('aria-rowcount', this.shown.length + 1);
        this.list.moveTo(0);
    }
    refresh() {
        this.list.setRowHeight(rowHeightOf(this.parts.box));
    }

    draw(row, element, i) {
        const {box} = this.parts;
        const one = this.shown[row];
        element.id = `${box.id}-${i}`;
        element.className = `difference ${one.values ? one.how : one.section ? 'section' : ''}`;
        element.classList.toggle('active', row === this.active);
        element.setAttribute('role', 'row');
        element.setAttribute('aria-rowindex', row + 2);  // below the heads
        element.setAttribute('aria-selected', row === this.active);
        element.replaceChildren(...one.values ? this.cellsOf(one, row === this.active, element.id) : [this.lineOf(one)]);
        if (row === this.active) box.setAttribute('aria-activedescendant', one.values ? `${element.id}-${this.side}` : element.id);
    }
    lineOf({message, section}) {
        const cell = textElement('span', 'whole', message ?? section.map(safeName).join(' › '));
        cell.setAttribute('role', section ? 'rowheader' : 'gridcell');
        return cell;
    }
    cellsOf({field, values, how, lines, remark}, isActive, id) {
        const head = textElement('span', 'side', safeName(field));
        head.setAttribute('role', 'rowheader');
        // A section that one file has alone is what stands below it.
        const isAlone = how === 'removed' || how === 'added';
        if (remark && !isAlone) head.append(textElement('small', '', ` ${remark}`));
        const empty = isAlone ? remark || 'only here' : '(empty)';
        const shown = values.map(value => value === null ? null : value === '' ? empty : safeName(value.slice(0, SHOWN)));
        const cells = shown.map((value, side) => {
            const cell = textElement('span', 'side value', '');
            cell.id = `${id}-${side}`;
            cell.setAttribute('role', 'gridcell');
            cell.classList.toggle('chosen', isActive && side === this.side);
            cell.classList.toggle('link', lines[side] > 0);
            const other = shown[1 - side];
            if (value === null) cell.setAttribute('aria-label', 'none');
            else cell.append(...how && values.every(Boolean) ? partsOf(value, other) : [value]);
            return cell;
        });
        for (const cell of [head, ...cells]) cell.title = cell.textContent;
        return [head, ...cells];
    }

    choose(row, side = this.side) {
        this.active = Math.max(0, Math.min(row, this.shown.length - 1));
        this.side = side;
        this.list.show(this.active);
        this.list.schedule();
    }
    // To the chosen value; to the other one where there is none.
    follow() {
        const {lines = [0, 0]} = this.shown[this.active];
        const side = lines[this.side] > 0 ? this.side : 1 - this.side;
        if (lines[side] === 0) return;
        this.close();
        this.goTo(this.two[side], lines[side] - 1, this.switches);
    }
    pressed(event) {
        const row = this.list.rowOf(event.target);
        if (row < 0 || event.button !== 0) return;
        const side = [...this.list.elements[row - Math.floor(this.list.top)].children].indexOf(event.target.closest('.side')) - 1;
        this.choose(row, Math.max(0, side));
        event.preventDefault();
        this.parts.box.focus();
        if (side >= 0) this.follow();
    }
    keyed(event) {
        if (event.ctrlKey || event.metaKey || event.altKey) return;
        const steps = {ArrowDown: 1, ArrowUp: -1, PageDown: this.list.page, PageUp: -this.list.page, Home: -Infinity, End: Infinity};
        if (event.key in steps) this.choose(this.active + steps[event.key]);
        else if (event.key === 'ArrowLeft' || event.key === 'ArrowRight') this.choose(this.active, event.key === 'ArrowLeft' ? 0 : 1);
        else if (event.key === 'Enter' || event.key === ' ') this.follow();
        else return;
        event.preventDefault();
    }
}
