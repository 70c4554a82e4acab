// What the list shows of files: columns, and rows that a worker fills some files at a time.
import {Runner, nameFor} from './pool.js';

const AT_ONCE = 32;         // files of several entries
const OF_A_SEQUENCE = 512;  // files of one

export const COLUMNS = [
    {key: 'path', title: 'Name'},
    {key: 'format', title: 'Format'},
    {key: 'frames', title: 'Files', isNumber: true},
    {key: 'size', title: 'Size', isNumber: true},
    {key: 'problem', title: 'Problem'},
];

export class FactsReader {
    // `changed` is called when entries got their facts.
    constructor(changed) {
        this.changed = changed;
        this.runner = new Runner();
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

    async work() {
        this.isRunning = true;
        while (this.waiting.length > 0) {
            const entry = this.waiting.shift();
            const batch = [entry];
            let files = entry.files.length;
            while (this.waiting.length > 0 && files + this.waiting[0].files.length <= AT_ONCE) {
                batch.push(this.waiting.shift());
                files += batch.at(-1).files.length;
            }
            await this.read(batch);
            this.changed();
        }
        this.isRunning = false;
        this.changed();
    }
    async read(batch) {
        const files = batch.flatMap(entry => entry.files);
        const rows = [];
        for (let at = 0; at < files.length; at += OF_A_SEQUENCE) {
            const part = files.slice(at, at + OF_A_SEQUENCE).map(({file, path}) => ({file, name: nameFor(path)}));
            const result = await this.runner.run('facts', {files: part});
            rows.push(...result.rows ?? part.map(() => ({problem: result.error})));
        }
        for (const entry of batch) combine(entry, rows.splice(0, entry.files.length));
    }
}

// An entry's facts from those of its files.
function combine(entry, rows) {
    const formats = [...new Set(rows.map(row => row.format ?? ''))];
    entry.format = formats.length === 1 ? formats[0] : 'several';
    entry.frames = entry.files.length;
    const problems = [];
    if (entry.missing) problems.push(`${entry.missing.toLocaleString('en')} missing`);
    if (entry.isSequence) {
        if (formats.length > 1) problems.push(`${formats.length} formats`);
        const sizes = new Set(entry.files.map(({file}) => file.size));
        if (sizes.size > 1) entry.odd = `${sizes.size.toLocaleString('en')} sizes`;
    } else if (entry.size === 0) {
        problems.push('empty');
    }
    for (const problem of new Set(rows.map(row => row.problem).filter(Boolean))) problems.push(problem);
    entry.problem = problems.join(', ');
    entry.isRead = true;
}
