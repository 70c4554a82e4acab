// Files that no encoder makes: copies of the samples, cut, overwritten, shifted, in the same way at each run.
import fs from 'node:fs';
import path from 'node:path';

const SWITCHES = [[], ['-v'], ['-v', '-v', '-v'], ['-t', '-a'], ['-mc', '-mx'], ['-d', '-u'], ['-s'], ['-h'], ['-hn=11,123']];

// A generator of numbers below a bound (Park and Miller's).
function randomSource(seed) {
    let state = seed;
    return bound => {
        state = state * 48271 % 0x7fffffff;
        return state % bound;
    };
}

function damaged(bytes, random) {
    const copy = Buffer.from(bytes);
    const kind = random(4);
    if (kind === 0) return copy.subarray(0, random(copy.length));
    if (kind === 1) {
        const at = random(Math.min(copy.length, 2000));
        return Buffer.concat([copy.subarray(0, at), copy.subarray(at + 1)]);
    }
    for (let i = 0; i < 1 << (2 * kind); i++) {
        const at = random(random(3) ? Math.min(copy.length, 1000) : copy.length);
        copy[at] = [0, 1, 0x7f, 0x80, 0xff, random(256)][random(6)];
    }
    return copy;
}

// {name, bytes, switches} of `copies` damaged copies of each sample.
export function* madeFiles(samples, copies = 3) {
    const random = randomSource(20261126);
    for (const family of fs.readdirSync(samples)) {
        const directory = path.join(samples, family);
        if (!fs.statSync(directory).isDirectory()) continue;
        for (const sample of fs.readdirSync(directory)) {
            if (/\.(txt|sh)$/.test(sample)) continue;
            const bytes = fs.readFileSync(path.join(directory, sample));
            for (let i = 0; i < copies; i++) {
                const name = `made-${i}${path.extname(sample)}`;
                yield {name, bytes: damaged(bytes, random), switches: SWITCHES[random(SWITCHES.length)]};
            }
        }
    }
}

// An MXF with tags, a label and a set that came after the dump's dictionaries.
export function writtenToday() {
    const bytes = text => Buffer.from(text.replace(/ /g, ''), 'hex');
    const item = (key, value) => Buffer.concat([bytes(key), Buffer.from([0x83, 0, value.length >> 8, value.length & 255]), value]);
    const local = (tag, value) => Buffer.concat([Buffer.from([tag >> 8, tag & 255, 0, value.length]), value]);
    const primer = '00000002 00000012 8001 060E2B34 0101010E 03020102 26000000 8002 060E2B34 0101010E 01020210 02040000';
    return Buffer.concat([
        item('060E2B34 02050101 0D010201 01020400', Buffer.alloc(88)),
        item('060E2B34 02050101 0D010201 01050100', bytes(primer)),
        item('060E2B34 02530101 0D010101 01016B00', Buffer.concat([
            local(0x8001, Buffer.from('en')), local(0x8002, bytes('00000001 00000010 060E2B34 04010101 01010101 01010000'))])),
    ]);
}
