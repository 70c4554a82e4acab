// Makes the page, one file: make-page.js MODULE TARGET. Scripts and style are allowed by their hashes, and nothing else is.
import {createHash} from 'node:crypto';
import fs from 'node:fs';
import {fileURLToPath} from 'node:url';
import zlib from 'node:zlib';

import {bundle} from './bundle.js';

const [modulePath, target] = process.argv.slice(2);
const page = name => fileURLToPath(new URL(`page/${name}`, import.meta.url));
const hashOf = text => `'sha256-${createHash('sha256').update(text).digest('base64')}'`;

const style = fs.readFileSync(page('page.css'), 'utf8');
const script = bundle(page('main.js'));
const worker = bundle(page('worker.js'));
const packed = zlib.gzipSync(fs.readFileSync(modulePath), {level: 9}).toString('base64');
for (const text of [script, worker]) {
    if (/<\/script|<!--/i.test(text)) throw new Error('a script that holds its own end');
}

// The worker's script is a blob of this page's, under the page's own policy.
const policy = [
    "default-src 'none'", `script-src ${hashOf(script)} 'wasm-unsafe-eval'`, `style-src ${hashOf(style)}`, 'worker-src blob:',
    "base-uri 'none'", "form-action 'none'",
].join('; ');

const parts = {POLICY: policy, STYLE: style, SCRIPT: script, WORKER: worker, MODULE: packed};
const html = fs.readFileSync(page('index.html'), 'utf8').replace(/@([A-Z]+)@/g, (all, name) => parts[name]);
if (html.length > 1.5e6) throw new Error(`the page has ${html.length} bytes`);
fs.writeFileSync(target, html);
