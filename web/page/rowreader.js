// Rows of keldump-table and reports of keldump-seq as the module's entries give them, packed.
import {pack, unpack} from './packing.js';
import {Source} from './source.js';

const HEAD = 16 * 1024;  // which recognition looks at

const encoder = new TextEncoder();
const decoder = new TextDecoder();

export class RowReader {
    // run(entry, {names, sources, input}) runs an entry of the module; what it prints.
    constructor(run) {
        this.run = run;
    }
    json(entry, inputs) {
        return JSON.parse(decoder.decode(this.run(entry, inputs)));
    }

    // Groups of the places of names in their list.
    groups(paths) {
        return this.json('page-groups', {input: pack(paths.map(path => encoder.encode(path)))});
    }
    odd(rows) {
        return this.json('page-odd', {input: rows});
    }
    // What keldump-seq says of a sequence, by its frames: {name, text, findings}.
    report(frames, switches) {
        return this.json('page-report', {names: switches, input: frames});
    }

    // Of each of some files what is shown, the row and what counts in a sequence. Their heads are read with one request.
    async rows(files) {
        const sources = files.map(({file}) => new Source(file));
        const sizes = files.map(({file}) => Math.min(file.size, HEAD));
        try {
            const heads = new Blob(files.map(({file}) => file.size <= HEAD ? file : file.slice(0, HEAD)));
            const bytes = new Uint8Array(await heads.arrayBuffer());
            if (bytes.length === sizes.reduce((sum, size) => sum + size, 0)) {
                let at = 0;
                sources.forEach((source, i) => source.hold(bytes.subarray(at, at += sizes[i])));
            }
        } catch {
            // One of them cannot be read: each says so itself.
        }
        return this.rowsOf(sources, files);
    }
    rowsOf(sources, files) {
        const names = files.map(({name}, i) => `${i}/${name}`);
        try {
            // A file that changed meanwhile says so when it is opened once more.
            const changed = () => sources.filter(source => source.hasChanged).length;
            let rows, before;
            do {
                before = changed();
                rows = this.run('page-rows', {names, sources});
            } while (changed() > before);
            if (unpack(rows).length !== 3 * files.length) throw new Error('rows are missing');
            return rows;
        } catch (error) {
            if (files.length > 1) return pack(files.flatMap((file, i) => unpack(this.rowsOf([sources[i]], [file]))));
            // Without the file the module says what it says of those that cannot be read.
            const [json, ...rest] = unpack(this.run('page-rows', {names, sources: []}));
            const row = JSON.parse(decoder.decode(json));
            row.cells[row.cells.length - 1] = String(error.message);
            return pack([encoder.encode(JSON.stringify(row)), ...rest]);
        }
    }
}
