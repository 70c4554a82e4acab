// Frames of a sequence become one entry of the list.

const FRAMES = /\.(dpx|cin|exr|tiff?|tga|jpe?g|j2[kc]|jp2|png|sgi|ari|bmp|ppm)$/i;
const NUMBERED = /^(.*?)(\d+)(\D*)$/;
const FEWEST = 3;

export const collator = new Intl.Collator('en', {numeric: true});

// Entries for files, in natural order: {path, size, files}, where several files are numbered alike with `isSequence`, the
// first and last number, and how many are missing between.
export function groupFiles(files) {
    const groups = new Map();
    const entries = [];
    for (const one of files) {
        const match = FRAMES.test(one.path) && NUMBERED.exec(one.path);
        if (!match) {
            entries.push(singleEntry(one));
            continue;
        }
        const key = `${match[1]}\0${match[3]}`;
        if (!groups.has(key)) groups.set(key, []);
        groups.get(key).push({...one, number: Number(match[2]), digits: match[2], before: match[1], behind: match[3]});
    }
    for (const group of groups.values()) {
        if (group.length < FEWEST) entries.push(...group.map(singleEntry));
        else entries.push(sequenceEntry(group.sort((a, b) => a.number - b.number)));
    }
    return entries.sort((a, b) => collator.compare(a.path, b.path));
}

export function singleEntry({file, path}) {
    return {path, size: file.size, files: [{file, path}]};
}

function sequenceEntry(group) {
    const [first, last] = [group[0], group.at(-1)];
    const numbers = new Set(group.map(one => one.number));
    return {
        path: `${first.before}[${first.digits}-${last.digits}]${first.behind}`,
        size: group.reduce((sum, one) => sum + one.file.size, 0),
        files: group.map(({file, path}) => ({file, path})),
        isSequence: true,
        missing: last.number - first.number + 1 - numbers.size,
    };
}
