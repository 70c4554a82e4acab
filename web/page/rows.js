// Which lines of a dump are rows: those inside folded sections and those that a filter does not take are none. Lines come
// in order and are taken once; what changes folds or the filter begins anew.
import {MARK} from './lines.js';

const DEEPEST = 2000;

// A test of names for one element of a pattern: part of a name, "*" for anything, whatever the case.
function nameTest(pattern) {
    const escaped = pattern.toLowerCase().replace(/[.+?^${}()|[\]\\]/g, '\\$&').replace(/\*/g, '.*');
    const expression = new RegExp(pattern.includes('*') ? `^${escaped}$` : escaped, 'iu');
    return name => expression.test(name);
}

// A pattern of paths: elements from the end of a path, apart by slashes.
class PathFilter {
    constructor(pattern) {
        this.elements = pattern.split('/').filter(part => part.trim() !== '').map(part => nameTest(part.trim()));
        this.known = this.elements.map(() => []);  // by a name's number
    }
    matchesName(element, id, names) {
        const known = this.known[element];
        known[id] ??= id > 0 && this.elements[element](names[id]) ? 1 : 2;
        return known[id] === 1;
    }
    // `path` holds numbers of names by depth, `depth` the last one.
    matches(path, depth, names) {
        let element = this.elements.length - 1;
        for (let d = depth; d > 0 && element >= 0; d--) {
            if (path[d] === 0 && d < depth) continue;
            if (!this.matchesName(element, path[d], names)) return false;
            element--;
        }
        return element < 0;
    }
}

export class Rows {
    constructor(lines) {
        this.lines = lines;
        this.folded = new Set();
        this.filter = null;
        this.path = new Uint32Array(DEEPEST + 1);
        this.above = new Int32Array(DEEPEST + 1);
        this.restart();
    }

    setFilter(pattern) {
        const filter = pattern.trim() ? new PathFilter(pattern) : null;
        this.filter = filter && filter.elements.length > 0 ? filter : null;
        this.restart();
    }
    fold(line, folded) {
        if (folded) this.folded.add(line);
        else this.folded.delete(line);
        this.restart();
    }
    foldAll(folded) {
        this.folded.clear();
        if (folded) {
            for (let line = 0; line < this.lines.count; line++) {
                if (this.lines.isSection(line)) this.folded.add(line);
            }
        }
        this.restart();
    }

    get isEveryLine() {
        return !this.filter && this.folded.size === 0;
    }
    get count() {
        return this.isEveryLine ? this.lines.count : this.kept;
    }
    line(row) {
        return this.isEveryLine ? row : this.list[row];
    }
    // The row of a line, or the one before where it would stand.
    row(line) {
        if (this.isEveryLine) return line;
        let low = 0, high = this.kept - 1;
        while (low < high) {
            const middle = (low + high + 1) >> 1;
            if (this.list[middle] <= line) low = middle;
            else high = middle - 1;
        }
        return low;
    }
    has(line) {
        return this.isEveryLine || this.list[this.row(line)] === line && this.kept > 0;
    }

    restart() {
        this.list = new Uint32Array(0);
        this.kept = 0;
        this.next = 0;  // block to be taken
        this.foldedDepth = Infinity;
        this.shownDepth = Infinity;
        this.path.fill(0);    // numbers of names by depth
        this.above.fill(-1);  // lines by depth that are no rows yet
        this.deepest = 0;
        this.extend();
    }

    // Takes the blocks that came since.
    extend() {
        if (this.isEveryLine) return;
        for (; this.next < this.lines.blocks.length; this.next++) this.take(this.lines.blocks[this.next]);
    }
    take(block) {
        if (this.kept + block.lines > this.list.length) {
            const larger = new Uint32Array(Math.max(this.kept + block.lines + 1024, Math.ceil(this.list.length * 1.5)));
            larger.set(this.list);
            this.list = larger;
        }
        for (let i = 0; i < block.lines; i++) {
            const depth = block.depths[i];
            const line = block.first + i;
            if (depth > this.foldedDepth) {
                if (this.filter) this.place(block, i, depth, line, true);
                continue;
            }
            this.foldedDepth = this.folded.has(line) ? depth : Infinity;
            if (!this.filter || this.place(block, i, depth, line, false)) this.push(line);
        }
    }
    push(line) {
        if (this.kept === this.list.length) {
            const larger = new Uint32Array(this.list.length * 2 + 1024);
            larger.set(this.list);
            this.list = larger;
        }
        this.list[this.kept++] = line;
    }

    // Whether the filter takes a line; the sections around one that it takes become rows before it.
    place(block, i, lineDepth, line, isHidden) {
        const depth = Math.min(lineDepth, DEEPEST);
        const isBlank = (block.marks[i] & MARK.blank) !== 0;
        for (; this.deepest > depth; this.deepest--) {
            this.path[this.deepest] = 0;
            this.above[this.deepest] = -1;
        }
        this.deepest = depth;
        this.path[depth] = block.names[i];
        if (depth > this.shownDepth) return !isHidden;
        this.shownDepth = Infinity;
        this.above[depth] = isBlank ? -1 : line;
        if (isBlank || !this.filter.matches(this.path, depth, this.lines.names)) return false;
        this.shownDepth = depth;
        for (let d = 1; d < depth; d++) {
            if (this.above[d] >= 0 && d <= this.foldedDepth) this.push(this.above[d]);
            this.above[d] = -1;
        }
        this.above[depth] = -1;
        return !isHidden;
    }
}
