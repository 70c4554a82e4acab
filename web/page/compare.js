// What differs between two files: keldump-diff's text in a window of its own.
import {Runner, nameFor} from './pool.js';
import {safeName} from './safe.js';
import {rowHeightOf} from './tree.js';
import {VirtualList} from './virtual.js';

const SHOWN = 2000;  // characters of a line

// Of the lines: what one file has alone, and sections, below which their fields stand.
const KINDS = [[/^\s*- /, 'removed'], [/^\s*\+ /, 'added'], [/^\S(?!.*: )/, 'section']];

export class Comparison {
    // `dialog` has a heading, `box` gets the lines.
    constructor(dialog, box) {
        this.dialog = dialog;
        this.box = box;
        this.lines = [];
        this.list = new VirtualList(box, rowHeightOf(box), (row, element) => this.draw(row, element));
        this.runner = new Runner();
        dialog.addEventListener('close', () => this.runner.cancel());
    }
    get text() {
        return this.lines.map(line => `${line}\n`).join('');
    }
    // Two of {file, path}; `switches` say how much of the dumps is compared.
    async show(files, switches) {
        this.dialog.querySelector('h2').textContent = files.map(({path}) => safeName(path)).join('  →  ');
        this.set(['Comparing …']);
        if (!this.dialog.open) this.dialog.showModal();
        this.refresh();
        this.box.focus();
        this.runner.cancel();
        const result = await this.runner.run('compare', {files: files.map(({file, path}) => ({file, name: nameFor(path)})), switches});
        this.set(this.linesOf(result));
    }
    linesOf({error, hasChanged, status, text, message}) {
        if (hasChanged) return ['A file changed, or can no longer be read.'];
        if (error || status > 1) return [safeName(error || message.trim())];
        if (status === 0) return ['Nothing differs but positions, dates, identifiers and sizes.'];
        // Their names are in the heading.
        return text.split('\n').filter((line, i) => line !== '' && !(i < 2 && /^(---|\+\+\+) /.test(line)));
    }
    close() {
        this.dialog.close();
    }
    set(lines) {
        this.lines = lines;
        this.list.setCount(lines.length);
        this.list.moveTo(0);
        const longest = lines.reduce((most, line) => Math.max(most, line.length), 0);
        this.list.spacer.style.minWidth = `${Math.min(longest, SHOWN) + 2}ch`;
    }
    refresh() {
        this.list.setRowHeight(rowHeightOf(this.box));
    }
    draw(row, element) {
        const line = this.lines[row];
        element.className = `difference ${KINDS.find(([test]) => test.test(line))?.[1] ?? ''}`;
        element.setAttribute('role', 'listitem');
        element.textContent = line.slice(0, SHOWN);
    }
}
