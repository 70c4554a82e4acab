// The lines of a dump as the module gives them: blocks of columns, no object a line.
import {safeText} from './safe.js';

export const MARK = {listing: 1, aside: 2, cut: 4, open: 8, blank: 16};
export const END = {none: 0, dumped: 1, unopened: 2, unknown: 3, stopped: 4};

const HEADER = 48;
const WIDE_PLACES = 1, WIDE_NAMES = 2;

function readBlock(buffer, first) {
    const [, lines, textSize, ranges, namesSize, formatSize, end, status, notes, notesSize, widths] = new Uint32Array(buffer, 0, 11);
    let at = HEADER;
    const column = (Type, count) => {
        const values = new Type(buffer, at, count);
        at += count * Type.BYTES_PER_ELEMENT;
        return values;
    };
    const Place = widths & WIDE_PLACES ? Float64Array : Uint32Array;
    const wideNames = widths & WIDE_NAMES;
    return {
        first, lines, end, status,
        ranges: column(Float64Array, 2 * ranges),
        offsets: column(Place, lines),
        sizes: column(Place, lines),
        textEnds: column(Uint32Array, lines),
        rangeEnds: column(Uint32Array, ranges > 0 ? lines : 0),
        wideNames: column(Uint32Array, wideNames ? lines : 0),
        noteLines: column(Uint32Array, notes),
        noteEnds: column(Uint32Array, notes),
        names: column(Uint16Array, wideNames ? 0 : lines),
        depths: column(Uint16Array, lines),
        marks: column(Uint8Array, lines),
        newNames: column(Uint8Array, namesSize),
        format: column(Uint8Array, formatSize),
        text: column(Uint8Array, textSize),
        notes: column(Uint8Array, notesSize),
    };
}

export class Lines {
    blocks = [];
    count = 0;
    textSize = 0;
    format = '';
    names = [''];
    longest = 0;  // of the lines, in bytes
    cuts = [];    // lines that the next one goes on with

    // Adds a block; how the dump ended, if it did.
    add(buffer) {
        const block = readBlock(buffer, this.count);
        const decoder = new TextDecoder();
        if (block.format.length > 0) this.format = decoder.decode(block.format);
        const view = new DataView(buffer, block.newNames.byteOffset, block.newNames.length);
        for (let at = 0; at < block.newNames.length;) {
            const size = view.getUint32(at, true);
            this.names.push(decoder.decode(block.newNames.subarray(at + 4, at + 4 + size)));
            at += 4 + size;
        }
        if (block.lines > 0) {
            if (block.wideNames.length > 0) block.names = block.wideNames;
            this.blocks.push(block);
            this.count += block.lines;
            this.textSize += block.text.length;
            let start = 0;
            block.textEnds.forEach((end, i) => {
                if (end - start > this.longest) this.longest = end - start;
                if (block.marks[i] & MARK.cut) this.cuts.push(block.first + i);
                start = end;
            });
        }
        return block.end;
    }

    // Where a line of the dump stands, whose number is that of one that is never cut.
    placeOf(number) {
        return this.cuts.reduce((place, cut) => cut < place ? place + 1 : place, number);
    }

    // The block that holds a line.
    blockOf(line) {
        const last = this.lastBlock;
        if (last && line >= last.first && line < last.first + last.lines) return last;
        let low = 0, high = this.blocks.length - 1;
        while (low < high) {
            const middle = (low + high + 1) >> 1;
            if (this.blocks[middle].first <= line) low = middle;
            else high = middle - 1;
        }
        this.lastBlock = this.blocks[low];
        return this.lastBlock;
    }

    bytes(line) {
        const block = this.blockOf(line);
        const i = line - block.first;
        return block.text.subarray(i > 0 ? block.textEnds[i - 1] : 0, block.textEnds[i]);
    }
    text(line, longest = Infinity) {
        const bytes = this.bytes(line);
        return safeText(bytes.length > longest ? bytes.subarray(0, longest) : bytes);
    }
    // What the registers of today say of a line of MXF; empty for most.
    note(line) {
        const {first, noteLines, noteEnds, notes} = this.blockOf(line);
        const i = noteLines.indexOf(line - first);
        return i < 0 ? '' : safeText(notes.subarray(i > 0 ? noteEnds[i - 1] : 0, noteEnds[i]));
    }
    depth(line) {
        const block = this.blockOf(line);
        return block.depths[line - block.first];
    }
    marks(line) {
        const block = this.blockOf(line);
        return block.marks[line - block.first];
    }
    name(line) {
        const block = this.blockOf(line);
        return this.names[block.names[line - block.first]];
    }

    // [[offset, size], ...] in order.
    ranges(line) {
        const block = this.blockOf(line);
        const i = line - block.first;
        const ranges = block.sizes[i] > 0 ? [[block.offsets[i], block.sizes[i]]] : [];
        const end = block.rangeEnds[i] ?? 0;
        for (let r = i > 0 ? block.rangeEnds[i - 1] ?? 0 : 0; r < end; r++)
            ranges.push([block.ranges[2 * r], block.ranges[2 * r + 1]]);
        return ranges;
    }

    // Whether lines stand below one.
    isSection(line) {
        if (line + 1 >= this.count) return false;
        return (this.marks(line) & (MARK.blank | MARK.aside)) === 0 && this.depth(line + 1) > this.depth(line) &&
            (this.marks(line + 1) & MARK.blank) === 0;
    }

    // The nearest line above that a line stands below; -1 where there is none.
    parent(line) {
        const depth = this.depth(line);
        for (let above = line - 1; above >= 0 && depth > 1; above--) {
            if (this.depth(above) < depth && (this.marks(above) & MARK.blank) === 0) return above;
        }
        return -1;
    }

    // The first line behind a section.
    sectionEnd(line) {
        const depth = this.depth(line);
        let end = line + 1;
        while (end < this.count && this.depth(end) > depth) end++;
        return end;
    }

    path(line) {
        const path = [];
        for (let at = line; at >= 0; at = this.parent(at)) {
            const name = this.name(at);
            if (name) path.unshift(name);
        }
        return path;
    }

    // The line that was made of a byte, the one with the smallest such range; -1 where there is none.
    lineAt(offset) {
        let best = -1, smallest = Infinity;
        for (const block of this.blocks) {
            const {offsets, sizes, ranges, rangeEnds} = block;
            for (let i = 0; i < block.lines; i++) {
                if (offset >= offsets[i] && offset < offsets[i] + sizes[i] && sizes[i] < smallest) {
                    best = block.first + i;
                    smallest = sizes[i];
                }
            }
            for (let r = 0, i = 0; 2 * r < ranges.length; r++) {
                while (rangeEnds[i] <= r) i++;
                if (offset >= ranges[2 * r] && offset < ranges[2 * r] + ranges[2 * r + 1] && ranges[2 * r + 1] < smallest) {
                    best = block.first + i;
                    smallest = ranges[2 * r + 1];
                }
            }
        }
        return best;
    }
}
