// The files: a row an entry, problems and odd values first and marked; sorted, filtered, opened by Enter or a click.
import {COLUMNS} from './facts.js';
import {safeName} from './safe.js';
import {collator} from './sequences.js';
import {rowHeightOf} from './tree.js';
import {VirtualList} from './virtual.js';

export function sizeText(bytes) {
    const units = ['B', 'KB', 'MB', 'GB', 'TB'];
    let unit = 0, size = bytes;
    for (; size >= 1000 && unit + 1 < units.length; unit++) size /= 1000;
    return unit === 0 ? `${bytes} B` : `${size.toFixed(size < 10 ? 1 : 0)} ${units[unit]}`;
}

function cellText(entry, key) {
    if (key === 'size') return sizeText(entry.size);
    if (key === 'path') return safeName(entry.path);
    if (key === 'frames') return entry.isSequence ? entry.files.length.toLocaleString('en') : '';
    if (key === 'problem') return [entry.problem, entry.odd].filter(Boolean).join(', ');
    return entry[key] === undefined ? '' : safeName(String(entry[key]));
}

function compare(a, b, key) {
    const order = [entry => entry.problem ? 0 : entry.odd ? 1 : 2];
    if (key === 'problem') {
        const difference = order[0](a) - order[0](b);
        return difference || collator.compare(a.path, b.path);
    }
    if (key === 'size') return a.size - b.size;
    if (key === 'frames') return a.files.length - b.files.length;
    return collator.compare(a[key] ?? '', b[key] ?? '') || collator.compare(a.path, b.path);
}

export class FileList {
    // `head` gets the columns' titles, `box` the rows; onOpen(entry).
    constructor(head, box, onOpen) {
        this.head = head;
        this.box = box;
        this.onOpen = onOpen;
        this.entries = [];
        this.shown = [];
        this.filter = '';
        this.sortKey = 'problem';
        this.descending = false;
        this.active = 0;  // rows
        this.anchor = 0;
        this.list = new VirtualList(box, rowHeightOf(box), (row, element, i) => this.draw(row, element, i));
        box.addEventListener('mousedown', event => this.pressed(event));
        box.addEventListener('keydown', event => this.keyed(event));
        this.drawHead();
    }

    set(entries) {
        this.entries = entries;
        this.update();
    }
    setFilter(text) {
        this.filter = text.trim().toLowerCase();
        this.update();
    }
    // Sorts and filters anew; what is chosen stays so.
    update() {
        const chosen = this.shown[this.active];
        const words = this.filter.split(/\s+/).filter(Boolean);
        this.shown = this.entries.filter(entry => {
            if (words.length === 0) return true;
            const text = COLUMNS.map(column => cellText(entry, column.key)).join(' ').toLowerCase();
            return words.every(word => text.includes(word));
        });
        const sign = this.descending ? -1 : 1;
        this.shown.sort((a, b) => sign * compare(a, b, this.sortKey));
        const at = this.shown.indexOf(chosen);
        this.active = Math.max(0, at);
        this.anchor = this.active;
        this.list.setCount(this.shown.length);
    }
    refresh() {
        this.list.setRowHeight(rowHeightOf(this.box));
    }

    drawHead() {
        this.head.replaceChildren(...COLUMNS.map(column => {
            const button = document.createElement('button');
            button.type = 'button';
            button.className = `column ${column.key}`;
            const isSorted = column.key === this.sortKey;
            button.textContent = column.title + (isSorted ? this.descending ? ' ▾' : ' ▴' : '');
            button.setAttribute('role', 'columnheader');
            button.setAttribute('aria-sort', isSorted ? this.descending ? 'descending' : 'ascending' : 'none');
            button.addEventListener('click', () => this.sortBy(column.key));
            return button;
        }));
    }
    sortBy(key) {
        this.descending = key === this.sortKey && !this.descending;
        this.sortKey = key;
        const focused = [...this.head.children].indexOf(document.activeElement);
        this.drawHead();
        this.head.children[focused]?.focus();
        this.update();
    }

    draw(row, element, i) {
        const entry = this.shown[row];
        const [first, last] = this.selection;
        element.id = `${this.box.id}-${i}`;
        element.className = 'file';
        element.classList.toggle('problem', Boolean(entry.problem));
        element.classList.toggle('odd', !entry.problem && Boolean(entry.odd));
        element.classList.toggle('selected', row >= first && row <= last);
        element.classList.toggle('active', row === this.active);
        element.classList.toggle('opened', entry === this.opened);
        element.setAttribute('role', 'row');
        element.setAttribute('aria-selected', row >= first && row <= last);
        element.setAttribute('aria-rowindex', row + 1);
        element.replaceChildren(...COLUMNS.map(column => {
            const cell = document.createElement('span');
            cell.className = `column ${column.key}`;
            cell.setAttribute('role', 'gridcell');
            cell.textContent = cellText(entry, column.key);
            if (column.key === 'path') cell.title = cell.textContent;
            return cell;
        }));
        if (row === this.active) this.box.setAttribute('aria-activedescendant', element.id);
    }

    get selection() {
        return [Math.min(this.anchor, this.active), Math.max(this.anchor, this.active)];
    }
    // The selected rows, or all where there is but one, as tab-separated text.
    text() {
        const [first, last] = this.selection;
        const rows = first === last ? this.shown : this.shown.slice(first, last + 1);
        const lines = [COLUMNS.map(column => column.title), ...rows.map(entry => COLUMNS.map(column =>
            column.key === 'size' ? entry.size : cellText(entry, column.key)))];
        return lines.map(line => `${line.join('\t')}\n`).join('');
    }
    choose(row, extend) {
        if (this.shown.length === 0) return;
        this.active = Math.max(0, Math.min(row, this.shown.length - 1));
        if (!extend) this.anchor = this.active;
        this.list.show(this.active);
    }
    open(row) {
        const entry = this.shown[row];
        if (!entry) return;
        this.opened = entry;
        this.list.schedule();
        this.onOpen(entry);
    }
    pressed(event) {
        const row = this.list.rowOf(event.target);
        if (row < 0 || event.button !== 0) return;
        this.choose(row, event.shiftKey);
        if (!event.shiftKey) this.open(row);
    }
    keyed(event) {
        if (event.altKey) return;
        if ((event.ctrlKey || event.metaKey) && event.key === 'a') {
            event.preventDefault();
            this.anchor = 0;
            this.choose(this.shown.length - 1, true);
            return;
        }
        if (event.ctrlKey || event.metaKey) return;
        const steps = {ArrowDown: 1, ArrowUp: -1, PageDown: this.list.page, PageUp: -this.list.page, Home: -Infinity, End: Infinity};
        if (event.key in steps) {
            event.preventDefault();
            this.choose(this.active + steps[event.key], event.shiftKey);
        } else if (event.key === 'Enter' || event.key === ' ') {
            event.preventDefault();
            this.open(this.active);
        }
    }
}
