// The files: a row an entry, problems and odd values first and marked; sorted, filtered, opened by Enter or a click.
import {safeName} from './safe.js';
import {collator} from './sequences.js';
import {rowHeightOf} from './tree.js';
import {VirtualList} from './virtual.js';

// `number` is what a column is sorted by, `odd` its title in remarks.
const COLUMNS = [
    {key: 'path', title: 'Name'},
    {key: 'format', title: 'Format', odd: 'FORMAT'},
    {key: 'picture', title: 'Size', odd: 'SIZE', number: entry => entry.numbers?.width * entry.numbers?.height},
    {key: 'rate', title: 'Rate', odd: 'RATE', number: entry => entry.numbers?.frame_rate},
    {key: 'codec', title: 'Codec', odd: 'CODEC'},
    {key: 'bits', title: 'Bits', odd: 'BITS', number: entry => entry.numbers?.bit_depth},
    {key: 'duration', title: 'Duration', number: entry => entry.isSequence ? entry.files.length : entry.numbers?.duration},
    {key: 'sound', title: 'Sound', odd: 'SOUND', number: entry => entry.numbers?.channels},
    {key: 'start', title: 'Timecode'},
    {key: 'reel', title: 'Reel', odd: 'REEL'},
    {key: 'bytes', title: 'Bytes', number: entry => entry.size},
    {key: 'problem', title: 'Problem'},
];

export function sizeText(bytes) {
    const units = ['B', 'KB', 'MB', 'GB', 'TB'];
    let unit = 0, size = bytes;
    for (; size >= 1000 && unit + 1 < units.length; unit++) size /= 1000;
    return unit === 0 ? `${bytes} B` : `${size.toFixed(size < 10 ? 1 : 0)} ${units[unit]}`;
}

// "MXF 1920x1080 25 fps 10:00:00:00 5.0 GB"
export function titleOf(entry, size) {
    return [entry.format, entry.picture, entry.rate && `${entry.rate} fps`, entry.start, sizeText(size)].filter(Boolean).map(safeName).join('  ');
}

const cleanText = entry => entry.isSequence && entry.isRead ? `${entry.files.length.toLocaleString('en')} ${entry.format}, clean` : '';

function cellText(entry, key) {
    if (key === 'bytes') return sizeText(entry.size);
    if (key === 'problem') return safeName([entry.problem, ...entry.odd ?? []].filter(Boolean).join('; ') || cleanText(entry));
    return safeName(entry[key] ?? '');
}

// What needs a look comes first: problems, then odd values; files that nothing is known of last.
function rankOf(entry) {
    if (entry.isOther) return 3;
    return entry.problem ? 0 : entry.odd ? 1 : 2;
}

function compare(a, b, {key, number}) {
    let difference = 0;
    if (key === 'problem') difference = rankOf(a) - rankOf(b);
    else if (number) difference = (number(a) || 0) - (number(b) || 0);
    else difference = collator.compare(a[key] ?? '', b[key] ?? '');
    return difference || a.order - b.order;
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
        this.isPair = false;  // two rows are chosen, and not those between them
        this.descending = false;
        this.active = 0;  // rows
        this.anchor = 0;
        this.list = new VirtualList(box, rowHeightOf(box), (row, element, i) => this.draw(row, element, i));
        box.addEventListener('mousedown', event => this.pressed(event));
        box.addEventListener('keydown', event => this.keyed(event));
        this.drawHead();
    }

    // Entries in the order of their names.
    set(entries) {
        this.entries = entries;
        entries.forEach((entry, i) => {
            entry.order = i;
        });
        this.update();
    }
    replace(entry, entries) {
        const at = this.entries.indexOf(entry);
        if (at >= 0) this.set([...this.entries.slice(0, at), ...entries, ...this.entries.slice(at + 1)]);
    }
    setFilter(text) {
        this.filter = text.trim().toLowerCase();
        this.update();
    }
    // Sorts and filters anew; what is chosen stays so.
    update() {
        const [chosen, anchor] = [this.shown[this.active], this.shown[this.anchor]];
        const words = this.filter.split(/\s+/).filter(Boolean);
        this.shown = this.entries.filter(entry => {
            if (words.length === 0) return true;
            const text = COLUMNS.map(column => cellText(entry, column.key)).join(' ').toLowerCase();
            return words.every(word => text.includes(word));
        });
        const sign = this.descending ? -1 : 1;
        const column = COLUMNS.find(({key}) => key === this.sortKey);
        this.shown.sort((a, b) => sign * compare(a, b, column));
        this.active = Math.max(0, this.shown.indexOf(chosen));
        this.anchor = this.isPair ? Math.max(0, this.shown.indexOf(anchor)) : this.active;
        this.list.setCount(this.shown.length);
        this.box.setAttribute('aria-rowcount', this.shown.length + 1);  // with the heads
    }
    refresh() {
        this.list.setRowHeight(rowHeightOf(this.box));
    }

    drawHead() {
        this.head.replaceChildren(...COLUMNS.map(column => {
            const head = document.createElement('span');
            const button = document.createElement('button');
            const isSorted = column.key === this.sortKey;
            button.type = 'button';
            button.textContent = column.title + (isSorted ? this.descending ? ' ▾' : ' ▴' : '');
            button.addEventListener('click', () => this.sortBy(column.key));
            head.className = `column ${column.key}`;
            head.setAttribute('role', 'columnheader');
            head.setAttribute('aria-sort', isSorted ? this.descending ? 'descending' : 'ascending' : 'none');
            head.append(button);
            return head;
        }));
    }
    sortBy(key) {
        this.descending = key === this.sortKey && !this.descending;
        this.sortKey = key;
        const focused = [...this.head.children].findIndex(head => head.contains(document.activeElement));
        this.drawHead();
        this.head.children[focused]?.firstChild.focus();
        this.update();
    }

    draw(row, element, i) {
        const entry = this.shown[row];
        element.id = `${this.box.id}-${i}`;
        element.className = 'file';
        const isSelected = this.isSelected(row);
        const problem = Boolean(entry.problem) && !entry.isOther;
        element.classList.toggle('problem', problem);
        element.classList.toggle('odd', !problem && Boolean(entry.odd));
        element.classList.toggle('other', entry.isOther === true);
        element.classList.toggle('selected', isSelected);
        element.classList.toggle('active', row === this.active);
        element.classList.toggle('opened', entry === this.opened);
        element.setAttribute('role', 'row');
        element.setAttribute('aria-selected', isSelected);
        element.setAttribute('aria-rowindex', row + 2);
        element.replaceChildren(...COLUMNS.map(column => {
            const cell = document.createElement('span');
            cell.className = `column ${column.key}`;
            cell.setAttribute('role', 'gridcell');
            cell.textContent = cellText(entry, column.key);
            cell.title = cell.textContent;
            if (column.odd && entry.odd?.some(remark => remark.startsWith(`${column.odd} `))) cell.classList.add('unusual');
            return cell;
        }));
        if (row === this.active) this.box.setAttribute('aria-activedescendant', element.id);
    }

    get selection() {
        return [Math.min(this.anchor, this.active), Math.max(this.anchor, this.active)];
    }
    isSelected(row) {
        const [first, last] = this.selection;
        return this.isPair ? row === first || row === last : row >= first && row <= last;
    }
    get selected() {
        return this.shown.filter((entry, row) => this.isSelected(row));
    }
    // The selected rows, or all where there is but one, as tab-separated text.
    text() {
        const rows = this.selected.length > 1 ? this.selected : this.shown;
        const lines = [COLUMNS.map(column => column.title), ...rows.map(entry => COLUMNS.map(column =>
            column.key === 'bytes' ? entry.size : cellText(entry, column.key)))];
        return lines.map(line => `${line.join('\t')}\n`).join('');
    }
    // `extend`: all rows from the last that was chosen; `pair`: that one and this.
    choose(row, {extend = false, pair = false} = {}) {
        if (this.shown.length === 0) return;
        this.active = Math.max(0, Math.min(row, this.shown.length - 1));
        this.isPair = pair && this.active !== this.anchor;
        if (!extend && !pair) this.anchor = this.active;
        this.list.show(this.active);
        this.onChoose?.();
    }
    open(row) {
        const entry = this.shown[row];
        if (!entry) return;
        this.onOpen(entry);
    }
    pressed(event) {
        const row = this.list.rowOf(event.target);
        if (row < 0 || event.button !== 0) return;
        const pair = event.ctrlKey || event.metaKey;
        this.choose(row, {extend: event.shiftKey, pair});
        if (!event.shiftKey && !pair) this.open(row);
    }
    keyed(event) {
        if (event.altKey) return;
        if ((event.ctrlKey || event.metaKey) && event.key === 'a') {
            event.preventDefault();
            this.anchor = 0;
            this.choose(this.shown.length - 1, {extend: true});
            return;
        }
        const pair = event.ctrlKey || event.metaKey;
        const steps = {ArrowDown: 1, ArrowUp: -1, PageDown: this.list.page, PageUp: -this.list.page, Home: -Infinity, End: Infinity};
        if (event.key in steps) {
            event.preventDefault();
            this.choose(this.active + steps[event.key], {extend: event.shiftKey, pair});
        } else if (!pair && (event.key === 'Enter' || event.key === ' ')) {
            event.preventDefault();
            this.open(this.active);
        }
    }
}
