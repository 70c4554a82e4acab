// Runs the module's entries, each request in an instance of its own. Messages: {id, task, module, file, name, ...}; what
// comes back has the same id.
import {Failure, run} from '../shim.js';
import {Lines} from './lines.js';
import {RowReader} from './rowreader.js';
import {Source} from './source.js';

const PART = 4 * 1024 * 1024;  // of a text that is collected

const NO_FILE = {type: 'pipe', isSeekable: false, size: () => 0, read: () => 0, write: bytes => bytes.length, close() {}};

function writer(write) {
    return {...NO_FILE, write(bytes) {
        write(bytes);
        return bytes.length;
    }};
}

function reader(bytes) {
    let at = 0;
    return {...NO_FILE, read(into) {
        const part = bytes.subarray(at, at + into.length);
        into.set(part);
        at += part.length;
        return part.length;
    }};
}

// Runs an entry over files by the names that it gets.
function runOver(module, args, sources, write, input, complain = () => {}) {
    const files = {
        standard: [input ? reader(input) : NO_FILE, writer(write), writer(complain)],
        open(name) {
            const source = sources.get(name);
            if (!source) throw new Failure('ENOENT');
            source.open();
            if (source.hasChanged) throw new Failure('EIDRM');
            return source;
        },
    };
    return run(module, args, files);
}

function joined(pieces) {
    const whole = new Uint8Array(pieces.reduce((sum, piece) => sum + piece.length, 0));
    let at = 0;
    for (const piece of pieces) {
        whole.set(piece, at);
        at += piece.length;
    }
    return whole;
}

// What an entry prints.
function printedBy(module, entry, {names = [], sources = [], input}) {
    const pieces = [];
    runOver(module, [entry, ...names], new Map(sources.map((source, i) => [names[i], source])), bytes => pieces.push(bytes.slice()), input);
    return joined(pieces);
}
const rowReader = module => new RowReader((entry, inputs) => printedBy(module, entry, inputs));

// RFC 4180
function quoted(text) {
    return /[",\n\r]/.test(text) ? `"${text.replace(/"/g, '""')}"` : text;
}

const tasks = {
    // The lines of a dump, as blocks.
    lines({module, file, name, switches, limits}, send) {
        const source = new Source(file);
        const args = ['page', ...limits, ...switches, name];
        const status = runOver(module, args, new Map([[name, source]]), bytes => {
            const block = bytes.slice().buffer;
            send({block}, [block]);
        });
        const {requests, bytesRead, hasChanged} = source;
        return {status, requests, bytesRead, hasChanged};
    },

    // All that an entry prints, as a blob: text, JSON.
    whole({module, entry, file, name, switches}, send) {
        const source = new Source(file);
        const parts = [];
        let pending = [], size = 0, total = 0;
        const seal = () => {
            parts.push(new Blob(pending));
            pending = [];
            size = 0;
            send({progress: total});
        };
        const status = runOver(module, [entry, ...switches, name], new Map([[name, source]]), bytes => {
            pending.push(bytes.slice());
            size += bytes.length;
            total += bytes.length;
            if (size >= PART) seal();
        });
        seal();
        return {status, blob: new Blob(parts), hasChanged: source.hasChanged};
    },

    // All lines with their paths and bytes, as comma-separated values.
    csv({module, file, name, switches}, send) {
        const source = new Source(file);
        const parts = [new Blob(['line,path,text,offset,size\n'])];
        const lines = new Lines();
        const path = [];
        let count = 0;
        const status = runOver(module, ['page', ...switches, name], new Map([[name, source]]), bytes => {
            lines.count = 0;
            lines.blocks = [];
            lines.lastBlock = undefined;
            lines.add(bytes.slice().buffer);
            let text = '';
            for (let line = 0; line < lines.count; line++) {
                const depth = lines.depth(line);
                path.length = depth;
                path[depth - 1] = lines.name(line);
                const [[offset, size] = ['', '']] = lines.ranges(line);
                text += `${++count},${quoted(path.filter(Boolean).join('/'))},${quoted(lines.text(line))},${offset},${size}\n`;
            }
            parts.push(new Blob([text]));
            send({progress: count});
        });
        return {status, blob: new Blob(parts), hasChanged: source.hasChanged};
    },

    groups({module, paths}) {
        return {groups: rowReader(module).groups(paths)};
    },
    async rows({module, files}) {
        return {rows: await rowReader(module).rows(files)};
    },
    sequence({module, input}) {
        return {given: printedBy(module, 'page-sequence', {input})};
    },
    report({module, frames, switches}) {
        return {report: rowReader(module).report(frames, switches)};
    },
    odd({module, rows}) {
        return {odd: rowReader(module).odd(rows)};
    },

    // What differs between two files; what the module complains of.
    compare({module, files, switches}) {
        const sources = files.map(({file}) => new Source(file));
        const names = files.map(({name}, i) => `${'AB'[i]}/${name}`);
        const pieces = [], messages = [];
        const status = runOver(module, ['page-diff', ...switches, '--', ...names],
            new Map(sources.map((source, i) => [names[i], source])), bytes => pieces.push(bytes.slice()), undefined, bytes => messages.push(bytes.slice()));
        const textOf = parts => new TextDecoder().decode(joined(parts));
        return {
            status, told: status <= 1 ? JSON.parse(textOf(pieces)) : undefined, message: textOf(messages),
            hasChanged: sources.some(source => source.hasChanged),
        };
    },
};

onmessage = async ({data}) => {
    const send = (message, transfer = []) => postMessage({id: data.id, ...message}, transfer);
    try {
        send({done: true, ...await tasks[data.task](data, send)});
    } catch (error) {
        send({done: true, error: String(error?.message ?? error)});
    }
};
