// keldump for node: the dump of a file as text, or as data, and what is true of it.
import fs from 'node:fs';
import {fileURLToPath} from 'node:url';

import {collectingFiles} from './files.js';
import {run} from './shim.js';

let compiled;

export function module() {
    compiled ??= new WebAssembly.Module(fs.readFileSync(new URL('keldump.wasm', import.meta.url)));
    return compiled;
}

function nameOf(file) {
    return file instanceof URL ? fileURLToPath(file) : String(file);
}

// The dump of a file: its text; with `lines` what keldump-json gives of it, {file, format, lines: [{path, text, values,
// at, ...}]}. `switches` are the command's (['-v', '-t']). A problem of the file is a line of its dump.
export function dump(file, {switches = [], lines = false} = {}) {
    const name = nameOf(file);
    const files = collectingFiles();
    if (!lines) {
        run(module(), ['keldump', ...switches, name], files);
        return files.output.content().toString();
    }
    const status = run(module(), ['keldump-json', '--utf8', ...switches, '--', name], files);
    if (status > 1) throw new TypeError(`keldump: unknown or wrong switch among ${JSON.stringify(switches)}`);
    return JSON.parse(files.output.content().toString())[0];
}

// What keldump-table says of a file: {format, width, height, frame_rate, timecode, problem, ..., more}. What is not known is
// null; the problem of a file that cannot be opened, or is of unknown format, says so.
export function facts(file) {
    const files = collectingFiles();
    run(module(), ['keldump-table', '--lines', '--', nameOf(file)], files);
    return JSON.parse(files.output.content().toString());
}
