// The dump as a tree: rows of lines, sections that fold, a selection.
import {MARK} from './lines.js';
import {Rows} from './rows.js';
import {VirtualList} from './virtual.js';

const SHOWN = 2000;  // characters of a line

export class Tree {
    // `box` is the element that scrolls; onSelect(line) is told of each choice.
    constructor(box, onSelect) {
        this.box = box;
        this.onSelect = onSelect;
        this.list = new VirtualList(box, rowHeightOf(box), (row, element, i) => this.draw(row, element, i));
        this.list.drawn = () => this.drawn();
        box.addEventListener('mousedown', event => this.pressed(event));
        box.addEventListener('mousemove', event => this.dragged(event));
        box.addEventListener('keydown', event => this.keyed(event));
        this.search = null;
        this.show(null);
    }

    show(lines) {
        this.lines = lines;
        this.rows = lines ? new Rows(lines) : null;
        this.active = -1;  // lines
        this.anchor = -1;
        this.list.setCount(0);
        this.list.moveTo(0);
        if (lines) this.extend();
    }
    // More lines came.
    extend() {
        this.rows.extend();
        this.list.setCount(this.rows.count);
        const width = Math.min(this.lines.longest, SHOWN) + 4;
        this.list.spacer.style.minWidth = `${width}ch`;
    }
    refresh() {
        this.list.setRowHeight(rowHeightOf(this.box));
    }
    setFilter(pattern) {
        this.rows?.setFilter(pattern);
        this.changed();
    }
    changed() {
        if (!this.rows) return;
        this.list.setCount(this.rows.count);
        if (this.active >= 0) this.list.show(this.rows.row(this.active), true);
    }

    // The lines that are selected, from the first to the last.
    get selection() {
        return [Math.min(this.anchor, this.active), Math.max(this.anchor, this.active)];
    }
    select(line, {extend = false, centred = false, tell = true} = {}) {
        if (!this.lines || line < 0 || line >= this.lines.count) return;
        this.active = line;
        if (!extend || this.anchor < 0) this.anchor = line;
        this.list.show(this.rows.row(line), centred);
        this.list.schedule();
        if (tell) this.onSelect(line);
    }
    selectAll() {
        if (!this.lines?.count) return;
        this.anchor = 0;
        this.active = this.lines.count - 1;
        this.list.schedule();
        this.onSelect(this.active);
    }
    // Selects a line, whatever is folded around it.
    reveal(line, options) {
        let unfolded = false;
        for (let above = this.lines.parent(line); above >= 0; above = this.lines.parent(above))
            unfolded = this.rows.folded.delete(above) || unfolded;
        if (unfolded) {
            this.rows.restart();
            this.list.setCount(this.rows.count);
        }
        this.select(line, {centred: true, ...options});
    }
    fold(line, folded) {
        if (!this.lines.isSection(line) || this.rows.folded.has(line) === folded) return false;
        this.rows.fold(line, folded);
        this.list.setCount(this.rows.count);
        return true;
    }
    foldAll(folded) {
        if (!this.rows) return;
        this.rows.foldAll(folded);
        this.changed();
    }

    draw(row, element, i) {
        const line = this.rows.line(row);
        const {lines} = this;
        const isSection = lines.isSection(line);
        const [first, last] = this.selection;
        const marks = lines.marks(line);
        element.id = `${this.box.id}-${i}`;
        element.className = 'line';
        element.classList.toggle('section', isSection);
        element.classList.toggle('listing', (marks & MARK.listing) !== 0);
        element.classList.toggle('aside', (marks & MARK.aside) !== 0);
        element.classList.toggle('selected', line >= first && line <= last && first >= 0);
        element.classList.toggle('active', line === this.active);
        element.setAttribute('role', 'treeitem');
        element.setAttribute('aria-level', lines.depth(line));
        element.setAttribute('aria-selected', line >= first && line <= last && first >= 0);
        element.setAttribute('aria-setsize', this.rows.count);
        element.setAttribute('aria-posinset', row + 1);
        if (isSection) element.setAttribute('aria-expanded', !this.rows.folded.has(line));
        else element.removeAttribute('aria-expanded');
        const fold = document.createElement('span');
        fold.className = 'fold';
        fold.setAttribute('aria-hidden', 'true');
        fold.textContent = isSection ? this.rows.folded.has(line) ? '▸' : '▾' : '';
        element.replaceChildren(fold, ...this.parts(line));
    }
    // The text of a line, with what is looked for marked.
    parts(line) {
        const text = this.lines.text(line, SHOWN);
        const parts = [];
        let done = 0;
        for (const [start, end] of this.search?.placesIn(text) ?? []) {
            if (start > done) parts.push(text.slice(done, start));
            const mark = document.createElement('mark');
            mark.textContent = text.slice(start, end);
            parts.push(mark);
            done = end;
        }
        parts.push(text.slice(done));
        const more = this.lines.bytes(line).length - SHOWN;
        if (more > 0) {
            const note = document.createElement('span');
            note.className = 'more';
            note.textContent = ` … ${more.toLocaleString('en')} more`;
            parts.push(note);
        }
        const registered = this.lines.note(line);
        if (registered) {
            const note = document.createElement('span');
            note.className = 'note';
            note.textContent = registered;
            parts.push(note);
        }
        return parts;
    }
    drawn() {
        const row = this.active >= 0 ? this.rows.row(this.active) : -1;
        const i = row - Math.floor(this.list.top);
        if (row >= 0 && this.list.elements[i] && !this.list.elements[i].hidden)
            this.box.setAttribute('aria-activedescendant', `${this.box.id}-${i}`);
        else this.box.removeAttribute('aria-activedescendant');
    }

    lineOf(event) {
        const row = this.list.rowOf(event.target);
        return row < 0 || row >= this.rows.count ? -1 : this.rows.line(row);
    }
    pressed(event) {
        if (!this.rows || event.button !== 0) return;
        const line = this.lineOf(event);
        if (line < 0) return;
        if (event.target.classList.contains('fold')) this.fold(line, !this.rows.folded.has(line));
        this.select(line, {extend: event.shiftKey});
    }
    dragged(event) {
        if (!this.rows || (event.buttons & 1) === 0 || this.anchor < 0 || document.activeElement !== this.box) return;
        const line = this.lineOf(event);
        if (line >= 0 && line !== this.active) {
            event.preventDefault();
            this.select(line, {extend: true});
        }
    }
    keyed(event) {
        if (!this.rows?.count || event.altKey) return;
        const row = this.active < 0 ? -1 : this.rows.row(this.active);
        const go = to => {
            event.preventDefault();
            this.select(this.rows.line(Math.max(0, Math.min(to, this.rows.count - 1))), {extend: event.shiftKey});
        };
        if (event.ctrlKey || event.metaKey) {
            if (event.key === 'a') {
                event.preventDefault();
                this.selectAll();
            }
            return;
        }
        switch (event.key) {
            case 'ArrowDown': return go(row + 1);
            case 'ArrowUp': return go(row - 1);
            case 'PageDown': return go(row + this.list.page);
            case 'PageUp': return go(row - this.list.page);
            case 'Home': return go(0);
            case 'End': return go(this.rows.count - 1);
            case 'ArrowRight':
                event.preventDefault();
                if (this.active >= 0 && !this.fold(this.active, false) && this.lines.isSection(this.active)) go(row + 1);
                return;
            case 'ArrowLeft':
                event.preventDefault();
                if (this.active >= 0 && !this.fold(this.active, true)) this.select(this.lines.parent(this.active));
                return;
            case 'Enter':
            case ' ':
                event.preventDefault();
                if (this.active >= 0) this.fold(this.active, !this.rows.folded.has(this.active));
                return;
            case '*': return this.foldAll(false);
            case '/': return this.foldAll(true);
        }
    }
}

export function rowHeightOf(element) {
    return Math.ceil(parseFloat(getComputedStyle(element).lineHeight)) || 20;
}
