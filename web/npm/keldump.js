// keldump for node: the dump of a file as text, or as data.
import fs from 'node:fs';
import {fileURLToPath} from 'node:url';

import {collectingFiles} from './files.js';
import {run} from './shim.js';

let compiled;

export function module() {
    compiled ??= new WebAssembly.Module(fs.readFileSync(new URL('keldump.wasm', import.meta.url)));
    return compiled;
}

// The dump of a file: its text; with `lines` what keldump-json gives of it, {file, format, lines: [{path, text, values,
// at, ...}]}. `switches` are the command's (['-v', '-t']). A problem of the file is a line of its dump.
export function dump(file, {switches = [], lines = false} = {}) {
    const name = file instanceof URL ? fileURLToPath(file) : String(file);
    const files = collectingFiles();
    if (!lines) {
        run(module(), ['keldump', ...switches, name], files);
        return files.output.content().toString();
    }
    const status = run(module(), ['keldump-json', '--utf8', ...switches, '--', name], files);
    if (status > 1) throw new TypeError(`keldump: unknown or wrong switch among ${JSON.stringify(switches)}`);
    return JSON.parse(files.output.content().toString())[0];
}
