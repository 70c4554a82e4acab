// Files and folders that are dropped or chosen, as {file, path}: path with the folders that were chosen with it.

const AHEAD = 64;

// {file, path} of {entry, path}, whose files are asked for some ahead. One that cannot be read is told to `failed`.
async function* filesOf(entries, fileOf, failed) {
    const asked = [];
    for await (const {entry, path} of entries) {
        asked.push(fileOf(entry).then(file => ({file, path}), () => failed(path)));
        if (asked.length < AHEAD) continue;
        const found = await asked.shift();
        if (found) yield found;
    }
    yield* (await Promise.all(asked)).filter(Boolean);
}

// Every file below a directory; entriesOf(directory) gives what is in it. Directories come behind files.
async function* walk(directory, path, isFile, entriesOf, fileOf, failed) {
    const directories = [];
    const files = async function* () {
        for await (const entry of entriesOf(directory)) {
            const one = {entry, path: `${path}/${entry.name}`};
            if (isFile(entry)) yield one;
            else directories.push(one);
        }
    };
    try {
        yield* filesOf(files(), fileOf, failed);
    } catch {
        failed(path);
    }
    for (const below of directories) yield* walk(below.entry, below.path, isFile, entriesOf, fileOf, failed);
}

// Of a handle.
async function* walkHandle(handle, failed) {
    const fileOf = entry => entry.getFile();
    if (handle.kind === 'file') yield* filesOf([{entry: handle, path: handle.name}], fileOf, failed);
    else yield* walk(handle, handle.name, entry => entry.kind === 'file', directory => directory.values(), fileOf, failed);
}

// The same of an entry, whose directories are given in parts.
async function* partsOf(directory) {
    const reader = directory.createReader();
    for (;;) {
        const entries = await new Promise((done, fail) => reader.readEntries(done, fail));
        if (entries.length === 0) return;
        yield* entries;
    }
}
async function* walkEntry(entry, failed) {
    const fileOf = one => new Promise((done, fail) => one.file(done, fail));
    if (entry.isFile) yield* filesOf([{entry, path: entry.name}], fileOf, failed);
    else yield* walk(entry, entry.name, one => one.isFile, partsOf, fileOf, failed);
}

// What was dropped. From a disk Chromium reads dropped folders by handles only, which leave out names that Windows could not
// have; entries have all. All items are asked before the first is waited for: they are gone when the event is over.
export function droppedFiles(transfer, failed) {
    const items = [...transfer.items].filter(item => item.kind === 'file').map(item => ({
        handle: location.protocol === 'file:' ? item.getAsFileSystemHandle?.().catch(() => null) : null,
        entry: item.webkitGetAsEntry?.(),
        file: item.getAsFile(),
    }));
    return (async function* () {
        for (const {handle, entry, file} of items) {
            const found = await handle;
            if (found) yield* walkHandle(found, failed);
            else if (entry) yield* walkEntry(entry, failed);
            else if (file) yield {file, path: file.name};
        }
    })();
}

// What an input of files has; it is emptied, so that the same file can be chosen again.
export function chosenFiles(input) {
    const files = [...input.files].map(file => ({file, path: file.webkitRelativePath || file.name}));
    input.value = '';
    return files;
}

// A folder by the browser's own dialogue; null where there is none, or it may not be used.
export async function pickedFolder(failed) {
    if (!window.showDirectoryPicker) return null;
    try {
        const handle = await window.showDirectoryPicker();
        return walkHandle(handle, failed);
    } catch (error) {
        return error.name === 'AbortError' ? [] : null;
    }
}
