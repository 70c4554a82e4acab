// Runs the module's entries, each request in an instance of its own. Messages: {id, task, module, file, name, ...}; what
// comes back has the same id.
import {Failure, run} from '../shim.js';
import {END, Lines} from './lines.js';
import {Source} from './source.js';

const HEAD = 16 * 1024;  // which recognition looks at
const AT_ONCE = 32;
const PART = 4 * 1024 * 1024;  // of a text that is collected

const NO_FILE = {type: 'pipe', isSeekable: false, size: () => 0, read: () => 0, write: bytes => bytes.length, close() {}};

function writer(write) {
    return {...NO_FILE, write(bytes) {
        write(bytes);
        return bytes.length;
    }};
}

// Runs an entry over files by the names that it gets.
function runOver(module, args, sources, write) {
    const files = {
        standard: [NO_FILE, writer(write), NO_FILE],
        open(name) {
            const source = sources.get(name);
            if (!source) throw new Failure('ENOENT');
            return source;
        },
    };
    return run(module, args, files);
}

// RFC 4180
function quoted(text) {
    return /[",\n\r]/.test(text) ? `"${text.replace(/"/g, '""')}"` : text;
}

function factsOf(module, source, name) {
    let format = '', end = 0;
    try {
        runOver(module, ['page', '--lines', '2', name], new Map([[name, source]]), bytes => {
            const lines = new Lines();
            end = lines.add(bytes.slice().buffer);
            format = lines.format || format;
        });
    } catch (error) {
        return {problem: String(error.message)};
    }
    if (source.hasChanged) return {problem: 'cannot be read'};
    return {format, problem: end === END.unknown ? 'unknown format' : undefined};
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

    // The format of each of some files, by their first lines: where none is known, that is the only one. Heads of files are
    // read at the same time, the next ones while the module looks at some.
    async facts({module, files}) {
        const rows = [];
        const read = at => {
            const sources = files.slice(at, at + AT_ONCE).map(({file}) => new Source(file));
            return Promise.all(sources.map(source => source.readHead(HEAD))).then(() => sources);
        };
        for (let at = 0, next = read(0); at < files.length; at += AT_ONCE) {
            const sources = await next;
            next = read(at + AT_ONCE);
            sources.forEach((source, i) => rows.push(factsOf(module, source, files[at + i].name)));
        }
        return {rows};
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
