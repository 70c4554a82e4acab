// The page: what its parts tell each other.
import {Comparison} from './compare.js';
import {Dump} from './dump.js';
import {copyText, download, saveBlob, handleCopies, referenceTo, textOf} from './export.js';
import {FactsReader, seldom} from './facts.js';
import {chosenFiles, droppedFiles, pickedFolder} from './files.js';
import {Search} from './find.js';
import {HexView} from './hex.js';
import {FileList, sizeText, titleOf} from './list.js';
import {prepare} from './pool.js';
import {SequenceView} from './report.js';
import {safeName} from './safe.js';
import {entriesOf} from './sequences.js';
import {Switches} from './switches.js';
import {Tree} from './tree.js';

const element = id => document.getElementById(id);
const number = value => value.toLocaleString('en');

const TYPING = 150;  // milliseconds until a filter is used

const files = [];  // {file, path}
let entry;         // of the list, that is open
let frame = 0;     // of its files
let dump;
let search;
let hit = -1;      // the found line that was gone to

const switches = new Switches(element('switches'), () => openFrame(frame));
const tree = new Tree(element('tree'), lineChosen);
const hex = new HexView(element('hex'), byteChosen);
const list = new FileList(element('columns'), element('list'), open);
const refreshList = seldom(() => {
    list.update();
    showListStatus();
    if (dump) showTitle();
    if (entry) report.show(entry);
});
const facts = new FactsReader((one, entries) => {
    if (entries[0] !== one) list.replace(one, entries);
    refreshList();
}, async () => {
    await facts.odd(list.entries);
    refreshList();
});
const report = new SequenceView({
    box: element('report'), summary: element('report-summary'), kinds: element('report-kinds'), frames: element('report-frames'),
    rows: element('findings'),
}, (one, switches) => facts.report(one, switches), openFrame);
const comparison = new Comparison({
    dialog: element('comparison'), heading: element('comparison-heading'), heads: element('difference-heads'), box: element('differences'),
    differing: element('differing-only'), all: element('compare-all'),
}, goToLine);

// Files

const unreadable = [];

async function addFiles(found) {
    unreadable.length = 0;
    const before = files.length;
    let shown = performance.now();
    for await (const one of found) {
        files.push(one);
        facts.found(one);
        if (performance.now() - shown < 250) continue;
        showListStatus();
        shown = performance.now();
    }
    if (files.length > before) await setEntries();
    showListStatus();
    if (unreadable.length > 0) say(`Could not be read: ${unreadable.map(safeName).join(', ')}. Try “Open folder”.`);
    else if (files.length === before + 1 && before === 0) open(list.entries[0]);
    else if (files.length > before) element('list').focus();
}
function failed(path) {
    unreadable.push(path);
}
// Groups all files anew; entries that stay the same keep their facts.
let grouping = 0;
async function setEntries() {
    document.body.classList.add('has-files');
    const current = ++grouping;
    const grouped = [...files];
    const groups = await facts.groups(grouped);
    if (current !== grouping) return;
    const known = new Map(list.entries.map(one => [one.files[0].file, one]));
    const entries = entriesOf(grouped, groups).map(one => {
        const old = known.get(one.files[0].file);
        return old && old.path === one.path && old.files.length === one.files.length ? old : one;
    });
    list.set(entries);
    facts.add(entries.filter(one => !one.isRead));
    showListStatus();
}
function showListStatus() {
    const size = list.entries.reduce((sum, one) => sum + one.size, 0);
    const left = list.entries.filter(one => !one.isRead).length;
    const reading = left > 0 ? `, ${number(left)} to read` : '';
    const shown = list.shown.length < list.entries.length ? `${number(list.shown.length)} of ` : '';
    element('list-status').textContent = `${shown}${number(list.entries.length)} entries, ${number(files.length)} files, ${sizeText(size)}${reading}`;
    showComparable();
}

element('open-files').addEventListener('click', () => element('file-input').click());
element('open-folder').addEventListener('click', async () => {
    const found = await pickedFolder(failed);
    if (found) addFiles(found);
    else element('folder-input').click();
});
for (const id of ['file-input', 'folder-input'])
    element(id).addEventListener('change', event => addFiles(chosenFiles(event.target)));
addEventListener('dragover', event => {
    event.preventDefault();
    document.body.classList.add('dropping');
});
addEventListener('dragleave', event => {
    if (!event.relatedTarget) document.body.classList.remove('dropping');
});
addEventListener('drop', event => {
    event.preventDefault();
    document.body.classList.remove('dropping');
    addFiles(droppedFiles(event.dataTransfer, failed));
});
element('list-filter').addEventListener('input', event => {
    list.setFilter(event.target.value);
    showListStatus();
});
element('clear').addEventListener('click', () => {
    files.length = 0;
    grouping++;
    facts.clear();
    list.set([]);
    closeDump();
    element('back').hidden = true;
    document.body.classList.remove('has-files');
    element('open-files').focus();
});

// Two files beside each other

// The two that are chosen; else what is open and the one that is chosen.
function comparable() {
    const {selected} = list;
    const two = selected.length === 2 ? selected : [entry, selected[0]];
    return selected.length < 3 && two[0] && two[1] && two[0] !== two[1] ? two : undefined;
}
function showComparable() {
    element('compare').disabled = !comparable();
}
list.onChoose = showComparable;
element('compare').addEventListener('click', () => {
    const two = comparable();
    if (!two) return;
    element('back').hidden = false;
    comparison.show(two.map(one => {
        const at = one === entry ? frame : 0;
        return {...one.files[at], entry: one, frame: at};
    }), switches.details);
});
element('back').addEventListener('click', () => comparison.open());
element('close-comparison').addEventListener('click', () => comparison.close());
element('copy-comparison').addEventListener('click', () => copyText(comparison.text));
element('download-comparison').addEventListener('click', () => saveBlob(new Blob([comparison.text]), 'comparison.txt'));

// Shows a line of a file's dump, which is made where it is not the one that is open.
function goToLine(one, line, details) {
    const isOpen = dump?.file === one.file && dump.state === 'done' && `${dump.switches}` === `${details}`;
    switches.setDetails(details);
    entry = one.entry;
    if (!isOpen) openFrame(one.frame);
    awaited = line;
    element('tree').focus();
    dumpChanged();
}

// The dump

function open(one) {
    entry = one;
    openFrame(0);
    element('tree').focus();
}
function openFrame(index) {
    if (!entry) return;
    const chosen = dump && tree.active > 0 ? dump.lines.ranges(tree.active)[0] : undefined;
    const isSame = index === frame && dump?.file === entry.files[index].file;
    frame = index;
    dump?.close();
    search?.stop();
    const one = entry.files[frame];
    list.opened = entry;
    dump = new Dump(one, switches.list(one.file.size), dumpChanged);
    tree.show(dump.lines);
    tree.setFilter(element('filter').value);
    hex.show(one.file, () => say('The file changed, or can no longer be read: choose it anew.'));
    element('name').textContent = safeName(one.path);
    element('name').title = safeName(one.path);
    element('frames').hidden = entry.files.length < 2;
    element('frame').textContent = `${number(frame + 1)} of ${number(entry.files.length)}`;
    document.body.classList.add('has-dump');
    report.show(entry);
    say('');
    showComparable();
    awaited = -1;
    restoring = isSame && chosen ? chosen[0] : -1;
    dumpChanged();
    look();
    list.refresh();
}
let awaited = -1;    // the line that is gone to when it is there
let restoring = -1;  // the byte whose line was chosen before the switches were

function closeDump() {
    dump?.close();
    search?.stop();
    element('dump-status').textContent = '';
    dump = entry = search = undefined;
    showComparable();
    list.opened = undefined;
    tree.show(null);
    hex.show(null);
    report.show(undefined);
    document.body.classList.remove('has-dump');
    list.refresh();
}
element('close').addEventListener('click', () => {
    closeDump();
    element('list').focus();
});
function dumpChanged() {
    tree.extend();
    search?.extend();
    if (tree.active < 0 && dump.lines.count > 0) tree.select(0, {tell: false});
    if (restoring >= 0 && dump.state !== 'running') {
        const line = tree.active === 0 ? dump.lines.lineAt(restoring) : -1;
        restoring = -1;
        if (line >= 0) tree.reveal(line);
    }
    if (awaited >= 0 && (dump.lines.placeOf(awaited) < dump.lines.count || dump.state !== 'running')) {
        tree.reveal(Math.min(dump.lines.placeOf(awaited), dump.lines.count - 1));
        awaited = -1;
    }
    const {lines, state} = dump;
    element('cancel').hidden = state !== 'running';
    element('go-on').hidden = state !== 'stopped';
    element('more').hidden = state !== 'stopped';
    element('progress').hidden = state !== 'running';
    element('dump-status').textContent = statusText(lines, state);
    element('tree').setAttribute('aria-busy', state === 'running');
    showTitle();
    if (state === 'failed') say(dump.message);
}
function showTitle() {
    const {size} = dump.file;
    element('facts').textContent = entry.isRead ? titleOf(entry, size) : [dump.lines.format, sizeText(size)].filter(Boolean).join('  ');
}
function statusText(lines, state) {
    const count = `${number(lines.count)} lines`;
    if (state === 'running') return count;
    if (state === 'cancelled') return `${count}, cancelled`;
    if (state === 'stopped') return `${count}, and there are more`;
    if (state === 'failed') return count;
    const time = dump.milliseconds < 1000 ? `${Math.round(dump.milliseconds)} ms` : `${(dump.milliseconds / 1000).toFixed(1)} s`;
    const status = dump.status ? `, status ${dump.status}` : '';
    return `${count}, ${sizeText(dump.bytesRead)} read in ${number(dump.requests)} request${dump.requests === 1 ? '' : 's'}, ${time}${status}`;
}
element('cancel').addEventListener('click', () => dump?.cancel());
element('go-on').addEventListener('click', () => dump?.goOn());
element('previous-frame').addEventListener('click', () => frame > 0 && openFrame(frame - 1));
element('next-frame').addEventListener('click', () => frame + 1 < entry.files.length && openFrame(frame + 1));
element('fold-all').addEventListener('click', () => tree.foldAll(true));
element('unfold-all').addEventListener('click', () => tree.foldAll(false));

function lineChosen(line) {
    const ranges = dump.lines.ranges(line);
    hex.mark(ranges);
    const size = ranges.reduce((sum, [, n]) => sum + n, 0);
    const place = ranges.length > 0 ? `0x${ranges[0][0].toString(16)} + ${number(size)} bytes` : 'no bytes of its own';
    element('place').textContent = `${dump.lines.path(line).map(safeName).join(' / ')}  ·  ${place}`;
}
function byteChosen(offset) {
    const line = dump.lines.lineAt(offset);
    if (line >= 0) {
        tree.reveal(line, {tell: false});
        lineChosen(line);
    } else {
        hex.mark([[offset, 1]]);
        element('place').textContent = `0x${offset.toString(16)}  ·  no line is of this byte`;
    }
}

// Finding

function look() {
    search?.stop();
    const query = element('find').value;
    hit = -1;
    search = query && dump ? new Search(dump.lines, query, found) : undefined;
    tree.search = search ?? null;
    tree.list.schedule();
    found();
}
function found() {
    if (search && hit < 0 && search.count > 0 && document.activeElement === element('find')) step(false, true);
    const at = search && hit >= 0 ? search.before(hit) + 1 : 0;
    element('found').textContent = !search ? '' : at ? `${number(at)} of ${number(search.count)}` : `${number(search.count)}${search.isDone ? '' : '…'} found`;
}
// Goes to the next found line that the filter takes.
function step(backwards, isFirst = false) {
    if (!search || search.count === 0) return;
    let from = isFirst ? Math.max(0, tree.active) - 1 : hit >= 0 ? hit : tree.active;
    for (let i = 0; i < search.count; i++) {
        from = search.found[search.step(from, backwards)];
        if (!tree.rows.filter || tree.rows.has(from)) break;
    }
    hit = from;
    tree.reveal(hit);
    found();
}
element('find').addEventListener('input', look);
element('find').addEventListener('keydown', event => {
    if (event.key === 'Enter') step(event.shiftKey);
    if (event.key === 'Escape') element('tree').focus();
});
element('next').addEventListener('click', () => step(false));
element('previous').addEventListener('click', () => step(true));
let typing;
element('filter').addEventListener('input', event => {
    clearTimeout(typing);
    typing = setTimeout(() => tree.setFilter(event.target.value), TYPING);
});
element('filter').addEventListener('keydown', event => {
    if (event.key === 'Escape' || event.key === 'Enter') element('tree').focus();
});
addEventListener('keydown', event => {
    const isCommand = event.ctrlKey || event.metaKey;
    if (isCommand && event.key === 'f') {
        event.preventDefault();
        const field = document.body.classList.contains('has-dump') ? 'find' : 'list-filter';
        element(field).focus();
        element(field).select();
    } else if (isCommand && event.key === 'o') {
        event.preventDefault();
        element(event.shiftKey ? 'open-folder' : 'open-files').click();
    } else if (event.key === 'F3' || isCommand && event.key === 'g') {
        event.preventDefault();
        step(event.shiftKey);
    } else if (event.key === 'F6') {
        event.preventDefault();
        nextPane(event.shiftKey);
    }
});
function nextPane(backwards) {
    const panes = ['list', 'findings', 'tree', 'hex'].map(element).filter(pane => pane.offsetParent !== null);
    const at = panes.indexOf(document.activeElement);
    panes[(at + (backwards ? -1 : 1) + panes.length) % panes.length]?.focus();
}

// Copies and downloads

handleCopies(() => {
    const focused = document.activeElement;
    try {
        if (focused === element('list')) return list.text();
        if (focused === element('findings')) return report.text;
        if (focused === element('tree') && dump && tree.active >= 0) return textOf(dump.lines, tree.rows, tree.selection);
    } catch (error) {
        if (!(error instanceof RangeError)) throw error;
        say('That is more than a clipboard takes: download it.');
        return '';
    }
    return undefined;
});
element('copy-list').addEventListener('click', () => copyText(list.text()));
element('copy-report').addEventListener('click', () => copyText(report.text));
element('copy-lines').addEventListener('click', () => {
    element('tree').focus();
    document.execCommand('copy');
});
element('copy-reference').addEventListener('click', () => {
    if (dump && tree.active >= 0) copyText(referenceTo(dump.path, dump.lines, tree.active));
});
for (const kind of ['text', 'json', 'csv']) element(`download-${kind}`).addEventListener('click', () => save(kind));
element('more').addEventListener('click', () => save('text'));
async function save(kind) {
    if (!dump) return;
    const problem = await download(kind, dump, progress => say(`Preparing the download … ${number(progress)}`));
    say(problem ?? '');
}

function say(text) {
    element('message').textContent = text;
    element('message').hidden = !text;
}

// The browser's zoom and fonts change how tall a row is.
addEventListener('resize', () => {
    for (const part of [tree, hex, list, comparison, report]) part.refresh();
});

prepare(element('worker').textContent, element('module').textContent).then(
    () => document.body.classList.add('ready'),
    error => say(`This browser cannot run keldump: ${error.message}`),
);
