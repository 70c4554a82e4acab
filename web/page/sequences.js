// Files as entries of the list: numbered frames are one, by the rules of keldump-table.

export const collator = new Intl.Collator('en', {numeric: true});

// An entry: what is shown of it comes later. `name` is a sequence's with its range.
export function entryOf(files, name = files[0].path) {
    return {path: name, size: files.reduce((sum, {file}) => sum + file.size, 0), files};
}

// Groups of places in the list of files, [[name, [place, ...]], ...], as entries in natural order.
export function entriesOf(files, groups) {
    const entries = groups.map(([name, places]) => entryOf(places.map(place => files[place]), name));
    return entries.sort((a, b) => collator.compare(a.path, b.path));
}
