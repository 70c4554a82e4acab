// What the list shows of files: rows of keldump-table, which workers read some files at a time, from when they are found.
import {pack, unpack} from './packing.js';
import {Runner, nameFor} from './pool.js';
import {entryOf} from './sequences.js';

const AT_ONCE = 32;     // files that a worker is asked for
const AHEAD = 2;        // requests that a worker has: it reads heads for one while it looks at the other
const WORKERS = Math.max(2, Math.min(4, (navigator.hardwareConcurrency ?? 2) - 1));
const INTERVAL = 200;   // milliseconds between two changes of the list
const UNKNOWN = 'unknown format';

// The cells of a row in the module's order.
export const CELLS = ['format', 'picture', 'rate', 'codec', 'bits', 'duration', 'sound', 'start', 'reel', 'problem'];

const encoder = new TextEncoder();
const decoder = new TextDecoder();
const jsonOf = bytes => JSON.parse(decoder.decode(bytes));

// {cells, known, numbers}, and the whole row for further questions.
const rowOf = ([json, packed]) => ({...jsonOf(json), packed});

export class FactsReader {
    // `changed(entry, entries)` is called when an entry got its facts: itself, or those that its files are instead;
    // `ended()` when no more is read.
    constructor(changed, ended) {
        this.changed = changed;
        this.ended = ended;
        this.readers = Array.from({length: WORKERS}, () => ({runner: new Runner(), asked: 0}));
        this.grouper = new Runner();
        this.waiting = [];  // files
        this.busy = 0;      // requests
    }
    // A file whose row will be wanted, whatever entry it will be of.
    found(file) {
        this.waiting.push(file);
        if (this.waiting.length >= AT_ONCE) this.work();
    }
    // Entries that have no facts yet: theirs are read in this order.
    add(entries) {
        this.waiting = [];
        for (const entry of entries) {
            if (entry.isTaken) continue;
            entry.unread = 0;
            for (const file of entry.files) {
                file.entry = entry;
                if (!file.parts) entry.unread++;
                if (!file.parts && !file.isAsked) this.waiting.push(file);
            }
            if (entry.unread === 0) this.take(entry);
        }
        this.work();
        this.checkEnd();
    }
    clear() {
        this.waiting = [];
    }
    async groups(files) {
        const {groups} = await this.grouper.run('groups', {paths: files.map(({path}) => path)});
        return groups ?? files.map(({path}, i) => [path, [i]]);
    }
    // Of each entry, what most others have otherwise.
    async odd(entries) {
        const known = entries.filter(entry => entry.packed);
        const {odd = []} = await this.grouper.run('odd', {rows: pack(known.map(entry => entry.packed))});
        for (const entry of entries) entry.odd = undefined;
        for (const [i, remarks] of odd) known[i].odd = remarks;
    }
    // What keldump-seq says of a sequence with its switches; undefined where one is wrong.
    async report(entry, switches) {
        return (await this.grouper.run('report', {frames: entry.frames, switches})).report;
    }

    work() {
        for (let round = 1; round <= AHEAD; round++) {
            for (const reader of this.readers) {
                if (this.waiting.length > 0 && reader.asked < round) this.ask(reader, this.waiting.splice(0, AT_ONCE));
            }
        }
    }
    async ask(reader, files) {
        reader.asked++;
        this.busy++;
        for (const file of files) file.isAsked = true;
        const {rows, error} = await reader.runner.run('rows', {files: files.map(({file, path}) => ({file, name: nameFor(path)}))});
        reader.asked--;
        const parts = rows && unpack(rows);
        files.forEach((file, i) => {
            file.isAsked = false;
            file.parts = parts?.slice(3 * i, 3 * i + 3) ?? failedParts(error);
            const {entry} = file;
            if (entry && --entry.unread === 0) this.take(entry);
        });
        this.busy--;
        this.work();
        this.checkEnd();
    }
    checkEnd() {
        if (this.busy === 0 && this.waiting.length === 0) this.ended();
    }

    // All files of an entry are read.
    async take(entry) {
        this.busy++;
        entry.isTaken = true;
        const parts = entry.files.map(file => file.parts);
        for (const file of entry.files) file.parts = file.entry = undefined;
        const row = parts.length > 1 ? await this.sequence(entry.files, parts) : rowOf(parts[0]);
        const entries = row ? [entry] : entry.files.map(file => entryOf([file]));
        entries.forEach((one, i) => setRow(one, row ?? rowOf(parts[i])));
        this.changed(entry, entries);
        this.busy--;
        if (parts.length > 1) this.checkEnd();
    }
    // The row of a sequence with its report and its frames; undefined where the files are none.
    async sequence(files, parts) {
        const names = files.map(({path}) => encoder.encode(path));
        const input = pack(parts.flatMap(([, packed, frame], i) => [names[i], packed, frame]));
        const {given} = await this.grouper.run('sequence', {input});
        if (!given || given.length === 0) return undefined;
        const [json, packed, report] = unpack(given);
        return {...rowOf([json, packed]), report: jsonOf(report), frames: pack(parts.flatMap(([, , frame], i) => [names[i], frame]))};
    }
}

// Of a file on which the worker ended.
function failedParts(error) {
    const row = {cells: CELLS.map(name => name === 'problem' ? error ?? 'cannot be read' : ''), numbers: {}, known: true};
    return [encoder.encode(JSON.stringify(row)), new Uint8Array(0), new Uint8Array(0)];
}

function setRow(entry, row) {
    CELLS.forEach((name, i) => {
        entry[name] = row.cells[i];
    });
    entry.numbers = row.numbers;
    entry.packed = row.packed.length > 0 ? row.packed : undefined;
    entry.report = row.report;
    entry.frames = row.frames;
    entry.isRead = true;
    entry.isSequence = entry.files.length > 1;
    // Files of unknown format that a folder holds beside others are no findings.
    entry.isOther = !row.known && entry.problem.startsWith(UNKNOWN) && entry.path.includes('/');
    if (entry.report && !entry.problem) entry.problem = findingsText(entry.report);
    if (entry.size === 0 && !entry.problem) entry.problem = 'empty';
}

// The first of the findings, which are lines of a report, and how many more there are.
function findingsText({name, text, findings}) {
    if (findings.length === 0) return '';
    const first = text.slice(name.length + 2, text.indexOf('\n'));
    return findings.length === 1 ? first : `${first}; ${findings.length - 1} more`;
}

// Calls a function soon, and not more often than now and then.
export function seldom(call) {
    let timer, last = -INTERVAL;
    return () => {
        timer ??= setTimeout(() => {
            timer = undefined;
            call();
            last = performance.now();
        }, Math.max(0, last + INTERVAL - performance.now()));
    };
}
