// Files and folders that are dropped or chosen, as {file, path}: path with the folders that were chosen with it.

const AT_ONCE = 32;

// Every file below a directory handle. One that cannot be read is told to `failed`.
async function* walkHandle(handle, path, failed) {
    try {
        if (handle.kind === 'file') {
            yield {file: await handle.getFile(), path};
            return;
        }
        let files = [];
        for await (const entry of handle.values()) {
            if (entry.kind === 'directory') {
                yield* walkHandle(entry, `${path}/${entry.name}`, failed);
                continue;
            }
            files.push(entry.getFile().then(file => ({file, path: `${path}/${entry.name}`}), () => failed(`${path}/${entry.name}`)));
            if (files.length < AT_ONCE) continue;
            yield* (await Promise.all(files)).filter(Boolean);
            files = [];
        }
        yield* (await Promise.all(files)).filter(Boolean);
    } catch {
        failed(path);
    }
}

// The same for what browsers without handles give.
async function* walkEntry(entry, path, failed) {
    try {
        if (entry.isFile) {
            yield {file: await new Promise((done, fail) => entry.file(done, fail)), path};
            return;
        }
        const reader = entry.createReader();
        for (;;) {
            const entries = await new Promise((done, fail) => reader.readEntries(done, fail));
            if (entries.length === 0) return;
            for (const one of entries) yield* walkEntry(one, `${path}/${one.name}`, failed);
        }
    } catch {
        failed(path);
    }
}

// What was dropped. From a disk Chromium reads dropped folders by handles only. All items are asked before the first is
// waited for: they are gone when the event is over.
export function droppedFiles(transfer, failed) {
    const items = [...transfer.items].filter(item => item.kind === 'file').map(item => ({
        handle: item.getAsFileSystemHandle?.().catch(() => null),
        entry: item.webkitGetAsEntry?.(),
        file: item.getAsFile(),
    }));
    return (async function* () {
        for (const {handle, entry, file} of items) {
            const found = await handle;
            if (found) yield* walkHandle(found, found.name, failed);
            else if (entry) yield* walkEntry(entry, entry.name, failed);
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
        return walkHandle(handle, handle.name, failed);
    } catch (error) {
        return error.name === 'AbortError' ? [] : null;
    }
}
