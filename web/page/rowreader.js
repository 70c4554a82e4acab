// Rows of keldump-table: heads of files are read at the same time, the next ones while the module looks at some.
import {pack, unpack} from './packing.js';
import {Source} from './source.js';

const HEAD = 16 * 1024;  // which recognition looks at
const AT_ONCE = 32;

const encoder = new TextEncoder();
const decoder = new TextDecoder();

const PARTS = 3;  // of a row

// {cells, known, numbers} as the module gives them, the whole row for further questions, and what counts in a sequence.
function rowOf(json, packed, frame) {
    return {...JSON.parse(decoder.decode(json)), packed, frame};
}

export class RowReader {
    // run(entry, {names, sources, input}) runs an entry of the module; what it prints.
    constructor(run) {
        this.run = run;
    }

    // Groups of the places of names in their list.
    groups(paths) {
        return JSON.parse(decoder.decode(this.run('page-groups', {input: pack(paths.map(path => encoder.encode(path)))})));
    }
    odd(rows) {
        return JSON.parse(decoder.decode(this.run('page-odd', {input: pack(rows)})));
    }

    // What keldump-seq says of a sequence, by its `frames`: {name, text, findings}.
    report(frames, switches) {
        return JSON.parse(decoder.decode(this.run('page-report', {names: switches, input: frames})));
    }

    // The rows of entries, each given when it is known: one, or where its files are no frames of a sequence one for each.
    async read(entries, given) {
        const files = entries.flat();
        const readHeads = at => {
            const sources = files.slice(at, at + AT_ONCE).map(({file}) => new Source(file));
            return Promise.all(sources.map(source => source.readHead(HEAD))).then(() => sources);
        };
        let rows = [], entry = 0;
        for (let at = 0, next = readHeads(0); at < files.length; at += AT_ONCE) {
            const sources = await next;
            next = readHeads(at + AT_ONCE);
            rows.push(...this.rowsOf(sources, files.slice(at, at + AT_ONCE)));
            for (; entry < entries.length && rows.length >= entries[entry].length; entry++) {
                const own = rows.splice(0, entries[entry].length);
                given(entry, own.length > 1 ? this.sequence(entries[entry], own) : own);
            }
        }
    }
    rowsOf(sources, files) {
        const names = files.map(({name}, i) => `${i}/${name}`);
        try {
            const parts = unpack(this.run('page-rows', {names, sources}));
            if (parts.length !== PARTS * files.length) throw new Error('rows are missing');
            return files.map((file, i) => rowOf(...parts.slice(PARTS * i, PARTS * (i + 1))));
        } catch (error) {
            if (files.length > 1) return files.flatMap((file, i) => this.rowsOf([sources[i]], [file]));
            // Without the file the module says what it says of those that cannot be read.
            const row = rowOf(...unpack(this.run('page-rows', {names, sources: []})));
            row.cells[row.cells.length - 1] = String(error.message);
            return [row];
        }
    }
    // One row with a report and its frames; or the rows.
    sequence(files, rows) {
        const names = files.map(({path}) => encoder.encode(path));
        const input = pack(rows.flatMap(({packed, frame}, i) => [names[i], packed, frame]));
        const parts = unpack(this.run('page-sequence', {input}));
        if (parts.length !== PARTS) return rows;
        const [json, packed, report] = parts;
        const frames = pack(rows.flatMap(({frame}, i) => [names[i], frame]));
        return [{...rowOf(json, packed), report: JSON.parse(decoder.decode(report)), frames}];
    }
}
