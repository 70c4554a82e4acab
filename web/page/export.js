// What leaves the page: text in the clipboard, and files that the browser saves.
import {Runner} from './pool.js';
import {safeName} from './safe.js';

let pending;  // text that the next copy event takes

export function copyText(text) {
    pending = text;
    document.execCommand('copy');
    pending = undefined;
}

// `chosenText()` gives the text of what is selected; undefined leaves the event to the browser.
export function handleCopies(chosenText) {
    document.addEventListener('copy', event => {
        const text = pending ?? chosenText();
        if (text === undefined) return;
        event.preventDefault();
        event.clipboardData.setData('text/plain', text);
    });
}

// The text of lines that are rows, what is folded inside the range with it.
export function textOf(lines, rows, [first, last]) {
    let text = '';
    for (let line = first; line <= last; line++) {
        if (rows.filter && !rows.has(line)) continue;
        text += `${lines.text(line)}\n`;
    }
    return text;
}

// "shot.mxf 0x300+4 Primer Pack/Local Tag = 3c0a"
export function referenceTo(path, lines, line) {
    const ranges = lines.ranges(line).map(([offset, size]) => `0x${offset.toString(16)}+${size}`);
    const text = lines.text(line).trim();
    const name = lines.name(line);
    const at = name ? text.indexOf(name) : -1;
    const value = (at < 0 ? text : text.slice(at + name.length)).replace(/^[\s:=]+/, '');
    return [safeName(path), ranges.join(','), lines.path(line).map(safeName).join('/'), value && `= ${value}`].filter(Boolean).join(' ');
}

const KINDS = {
    text: {task: 'whole', entry: 'keldump', extension: 'txt'},
    json: {task: 'whole', entry: 'keldump-json', extension: 'json'},
    csv: {task: 'csv', extension: 'csv'},
};

// Saves the whole dump of a file; null, or what went wrong.
export async function download(kind, dump, progress) {
    const {task, entry, extension} = KINDS[kind];
    const runner = new Runner();
    const {file, name, switches} = dump;
    const result = await runner.run(task, {entry, file, name, switches}, message => progress(message.progress));
    runner.cancel();
    if (result.error || result.hasChanged) return result.error ?? 'The file changed, or can no longer be read.';
    saveBlob(result.blob, `${dump.path.split('/').at(-1)}.${extension}`);
    return null;
}

export function saveBlob(blob, name) {
    const link = document.createElement('a');
    link.href = URL.createObjectURL(blob);
    link.download = name;
    link.click();
    setTimeout(() => URL.revokeObjectURL(link.href), 60000);
}
