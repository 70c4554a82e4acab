// The bytes of the file beside its dump: those of the chosen line are marked, choosing one goes to its line.
import {rowHeightOf} from './tree.js';
import {VirtualList} from './virtual.js';

const WIDTH = 16;
const BLOCK = 64 * 1024;
const MOST_BLOCKS = 64;

const hex = (number, digits) => number.toString(16).padStart(digits, '0');

export class HexView {
    // onChoose(offset) is told of each byte that is chosen.
    constructor(box, onChoose) {
        this.box = box;
        this.onChoose = onChoose;
        this.list = new VirtualList(box, rowHeightOf(box), (row, element, i) => this.draw(row, element, i));
        box.addEventListener('mousedown', event => this.pressed(event));
        box.addEventListener('keydown', event => this.keyed(event));
        this.show(null);
    }

    show(file, onChanged) {
        this.file = file;
        this.onChanged = onChanged;
        this.blocks = new Map();
        this.ranges = [];
        this.cursor = -1;
        this.digits = Math.max(8, (file?.size ?? 0).toString(16).length);
        const rows = Math.ceil((file?.size ?? 0) / WIDTH);
        this.list.setCount(rows);
        this.box.setAttribute('aria-rowcount', rows);
        this.box.removeAttribute('aria-activedescendant');
        this.list.moveTo(0);
    }
    refresh() {
        this.list.setRowHeight(rowHeightOf(this.box));
    }
    // Marks ranges, and shows the first one.
    mark(ranges) {
        this.ranges = ranges;
        this.cursor = ranges.length > 0 ? ranges[0][0] : -1;
        if (ranges.length > 0) {
            const row = Math.floor(ranges[0][0] / WIDTH);
            const last = Math.floor((ranges[0][0] + ranges[0][1] - 1) / WIDTH);
            if (row < this.list.top || last >= this.list.top + this.list.page) this.list.moveTo(row - Math.floor(this.list.page / 3));
        }
        this.list.schedule();
    }

    // The bytes of a row, where they were read; asks for them otherwise.
    bytesOf(row) {
        const index = Math.floor(row * WIDTH / BLOCK);
        const block = this.blocks.get(index);
        if (block) {
            this.blocks.delete(index);  // the one that was used last is the youngest
            this.blocks.set(index, block);
            const start = row * WIDTH - index * BLOCK;
            return block.bytes?.subarray(start, start + WIDTH);
        }
        const wanted = {};
        this.blocks.set(index, wanted);
        if (this.blocks.size > MOST_BLOCKS) this.blocks.delete(this.blocks.keys().next().value);
        const {file} = this;
        file.slice(index * BLOCK, (index + 1) * BLOCK).arrayBuffer().then(buffer => {
            wanted.bytes = new Uint8Array(buffer);
            if (this.file === file) this.list.schedule();
        }, () => this.file === file && this.onChanged());
        return undefined;
    }

    draw(row, element, i) {
        if (!element.firstChild) {
            element.className = 'hexrow';
            element.setAttribute('role', 'row');
            element.append(document.createElement('span'));
            element.firstChild.className = 'offset';
            element.firstChild.setAttribute('role', 'rowheader');
            for (let cell = 0; cell < 2 * WIDTH; cell++) element.append(this.cell(`${this.box.id}-${i}-${cell}`, cell < WIDTH));
        }
        const start = row * WIDTH;
        const bytes = this.bytesOf(row);
        const [offset, ...cells] = element.children;
        offset.textContent = hex(start, this.digits);
        const marked = this.ranges.filter(([at, size]) => at < start + WIDTH && at + size > start);
        for (let at = start; at < start + WIDTH; at++) {
            const byte = bytes?.[at - start];
            const isThere = byte !== undefined;
            const [digits, character] = [cells[at - start], cells[WIDTH + at - start]];
            digits.textContent = isThere ? hex(byte, 2) : '  ';
            character.textContent = isThere ? byte > 0x20 && byte < 0x7f ? String.fromCharCode(byte) : byte === 0x20 ? ' ' : '·' : ' ';
            const name = marked.some(([from, size]) => at >= from && at < from + size) ? 'hit' : byte === 0 ? 'zero' : '';
            const cursor = at === this.cursor ? ' cursor' : '';
            digits.className = name + cursor + (at % 8 === 0 ? ' wide' : '');
            character.className = `${name}${cursor} character${at === start ? ' wide' : ''}`;
            if (cursor) this.box.setAttribute('aria-activedescendant', digits.id);
        }
        element.setAttribute('aria-rowindex', row + 1);
    }
    // The digits of a byte, or its character, which says the same.
    cell(id, isNumber) {
        const cell = document.createElement('i');
        if (isNumber) {
            cell.id = id;
            cell.setAttribute('role', 'gridcell');
        } else {
            cell.setAttribute('aria-hidden', 'true');
        }
        return cell;
    }

    choose(offset) {
        if (!this.file || offset < 0 || offset >= this.file.size) return;
        this.onChoose(offset);
        this.cursor = offset;
        this.list.show(Math.floor(offset / WIDTH));
    }
    pressed(event) {
        const row = this.list.rowOf(event.target);
        if (row < 0 || event.target.tagName !== 'I') return;
        const i = [...event.target.parentElement.children].indexOf(event.target) - 1;
        this.choose(row * WIDTH + i % WIDTH);
    }
    keyed(event) {
        const steps = {
            ArrowRight: 1, ArrowLeft: -1, ArrowDown: WIDTH, ArrowUp: -WIDTH, PageDown: WIDTH * this.list.page, PageUp: -WIDTH * this.list.page,
        };
        if (!this.file || event.ctrlKey || event.metaKey || event.altKey) return;
        const step = steps[event.key];
        if (step === undefined && event.key !== 'Home' && event.key !== 'End') return;
        event.preventDefault();
        const to = event.key === 'Home' ? 0 : event.key === 'End' ? this.file.size - 1 : Math.max(this.cursor, 0) + step;
        this.choose(Math.max(0, Math.min(to, this.file.size - 1)));
    }
}
