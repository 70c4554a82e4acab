// A file of the page, read in slices as the module asks for them.
import {Failure} from '../shim.js';

const BRIDGE = 256 * 1024;  // a gap that is cheaper read than skipped: a request takes some 4 ms
const FIRST_WINDOW = 64 * 1024;
const LARGEST_WINDOW = 4 * 1024 * 1024;

export class Source {
    type = 'file';
    isSeekable = true;
    requests = 0;
    bytesRead = 0;
    hasChanged = false;

    constructor(file) {
        this.file = file;
        this.reader = new FileReaderSync();
        this.start = 0;  // of what was read last
        this.held = new Uint8Array(0);
        this.window = FIRST_WINDOW;
    }

    // The head, which was read with those of other files.
    hold(head) {
        this.held = head;
        this.requests++;
        this.bytesRead += head.length;
    }

    // One that is gone seems empty.
    open() {
        if (this.file.size > 0) return;
        try {
            this.reader.readAsArrayBuffer(this.file);
        } catch {
            this.hasChanged = true;
        }
    }
    size() {
        return this.file.size;
    }
    write() {
        throw new Failure('EROFS');
    }
    close() {}

    read(bytes, position) {
        const end = Math.min(position + bytes.length, this.file.size);
        if (end <= position) return 0;
        if (position < this.start || end > this.start + this.held.length) this.fetch(position, end);
        bytes.set(this.held.subarray(position - this.start, end - this.start));
        return end - position;
    }

    // Reads on where what follows is near, with larger and larger requests, and no more than is asked for elsewhere.
    fetch(position, end) {
        const known = this.start + this.held.length;
        const goesOn = this.held.length > 0 && position >= this.start && position <= known + BRIDGE;
        this.window = goesOn ? Math.min(this.window * 2, LARGEST_WINDOW) : FIRST_WINDOW;
        const to = goesOn ? Math.max(end, Math.min(position + this.window, this.file.size)) : end;
        try {
            this.held = new Uint8Array(this.reader.readAsArrayBuffer(this.file.slice(position, to)));
        } catch {
            this.hasChanged = true;
            throw new Failure('EIO');
        }
        this.requests++;
        this.bytesRead += this.held.length;
        this.start = position;
        if (this.held.length < to - position) {
            this.hasChanged = true;
            throw new Failure('EIO');
        }
    }
}
