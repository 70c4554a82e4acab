// What the list shows of files: rows of keldump-table, which a worker reads some files at a time.
import {Runner, nameFor} from './pool.js';
import {entryOf} from './sequences.js';

const AT_ONCE = 256;    // files that a worker is asked for
const INTERVAL = 200;   // milliseconds between two changes of the list
const UNKNOWN = 'unknown format';

// The cells of a row in the module's order.
export const CELLS = ['format', 'picture', 'rate', 'codec', 'bits', 'duration', 'sound', 'start', 'reel', 'problem'];

export class FactsReader {
    // `changed(entry, entries)` is called when an entry got its facts: itself, or those that its files are instead;
    // `ended()` when no more is read.
    constructor(changed, ended) {
        this.changed = changed;
        this.ended = ended;
        this.runner = new Runner();
        this.grouper = new Runner();
        this.waiting = [];
    }
    add(entries) {
        this.waiting.push(...entries);
        if (!this.isRunning) this.work();
    }
    clear() {
        this.waiting = [];
    }
    get left() {
        return this.waiting.length;
    }
    async groups(files) {
        const {groups} = await this.grouper.run('groups', {paths: files.map(({path}) => path)});
        return groups ?? files.map(({path}, i) => [path, [i]]);
    }
    // Of each entry, what most others have otherwise.
    async odd(entries) {
        const known = entries.filter(entry => entry.packed);
        const {odd = []} = await this.grouper.run('odd', {rows: known.map(entry => entry.packed)});
        for (const entry of entries) entry.odd = undefined;
        for (const [i, remarks] of odd) known[i].odd = remarks;
    }

    // What keldump-seq says of a sequence with its switches; undefined where one is wrong.
    async report(entry, switches) {
        return (await this.grouper.run('report', {frames: entry.frames, switches})).report;
    }

    async work() {
        this.isRunning = true;
        while (this.waiting.length > 0) {
            const batch = [];
            for (let files = 0; files < AT_ONCE && this.waiting.length > 0; files += batch.at(-1).files.length)
                batch.push(this.waiting.shift());
            const entries = batch.map(({files}) => files.map(({file, path}) => ({file, path, name: nameFor(path)})));
            let read = 0;
            const result = await this.runner.run('rows', {entries}, ({entry, rows}) => {
                read = entry + 1;
                this.take(batch[entry], rows);
            });
            for (const entry of batch.slice(read)) setRow(entry, {cells: CELLS.map(name => name === 'problem' ? result.error : ''), numbers: {}, known: true});
        }
        this.isRunning = false;
        this.ended();
    }
    take(entry, rows) {
        const entries = rows.length === 1 ? [entry] : entry.files.map(file => entryOf([file]));
        entries.forEach((one, i) => setRow(one, rows[i]));
        this.changed(entry, entries);
    }
}

function setRow(entry, row) {
    CELLS.forEach((name, i) => {
        entry[name] = row.cells[i];
    });
    entry.numbers = row.numbers;
    entry.packed = row.packed;
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

// Calls a function now and then, and not more often.
export function seldom(call) {
    let timer;
    return () => {
        timer ??= setTimeout(() => {
            timer = undefined;
            call();
        }, INTERVAL);
    };
}
