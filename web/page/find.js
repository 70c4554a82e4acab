// Finds a text in the lines of a dump, whatever the case of ASCII letters, some milliseconds at a time.

const SLICE = 10;  // milliseconds

const LOWER = Uint8Array.from({length: 256}, (_, byte) => byte >= 65 && byte <= 90 ? byte + 32 : byte);

// Where a pattern begins in bytes from a place on; -1 for nowhere (Horspool's way).
function indexOf(bytes, pattern, skips, from) {
    const last = pattern.length - 1;
    for (let at = from + last; at < bytes.length; at += skips[LOWER[bytes[at]]]) {
        let i = 0;
        while (i <= last && LOWER[bytes[at - i]] === pattern[last - i]) i++;
        if (i > last) return at - last;
    }
    return -1;
}

export class Search {
    // `changed` is called when more lines were found.
    constructor(lines, query, changed) {
        this.lines = lines;
        this.changed = changed;
        this.query = query.toLowerCase();
        this.pattern = new TextEncoder().encode(query).map(byte => LOWER[byte]);
        this.skips = new Uint32Array(256).fill(this.pattern.length);
        for (let i = 0; i + 1 < this.pattern.length; i++) this.skips[this.pattern[i]] = this.pattern.length - 1 - i;
        this.found = new Uint32Array(1024);  // lines
        this.count = 0;
        this.next = 0;  // block
        this.extend();
    }
    stop() {
        clearTimeout(this.timer);
        this.lines = null;
    }

    // Goes on with what was not looked at.
    extend() {
        if (!this.lines || this.timer) return;
        this.timer = setTimeout(() => {
            this.timer = undefined;
            const until = performance.now() + SLICE;
            while (this.lines && this.next < this.lines.blocks.length && performance.now() < until)
                this.searchBlock(this.lines.blocks[this.next++]);
            this.changed();
            if (this.lines && this.next < this.lines.blocks.length) this.extend();
        });
    }
    get isDone() {
        return this.next >= this.lines.blocks.length;
    }
    searchBlock({text, textEnds, first}) {
        let line = 0;
        for (let at = 0; (at = indexOf(text, this.pattern, this.skips, at)) >= 0;) {
            while (textEnds[line] <= at) line++;
            if (at + this.pattern.length > textEnds[line]) {
                at++;  // over the end of a line
                continue;
            }
            this.add(first + line);
            at = textEnds[line];
        }
    }
    add(line) {
        if (this.count === this.found.length) {
            const larger = new Uint32Array(this.count * 2);
            larger.set(this.found);
            this.found = larger;
        }
        this.found[this.count++] = line;
    }

    // How many found lines stand before one.
    before(line) {
        let low = 0, high = this.count;
        while (low < high) {
            const middle = (low + high) >> 1;
            if (this.found[middle] < line) low = middle + 1;
            else high = middle;
        }
        return low;
    }
    // The number of the next found line behind one (or before it), around the ends; -1 where there is none.
    step(line, backwards) {
        if (this.count === 0) return -1;
        const at = this.before(backwards ? line : line + 1) - (backwards ? 1 : 0);
        return (at + this.count) % this.count;
    }

    // Places of the query in a text that is shown.
    placesIn(text) {
        const places = [];
        const lower = text.toLowerCase();
        if (lower.length !== text.length) return places;
        for (let at = 0; (at = lower.indexOf(this.query, at)) >= 0; at += this.query.length)
            places.push([at, at + this.query.length]);
        return places;
    }
}
