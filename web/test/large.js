// Large files whose pictures and samples are holes, which take no room on the disk.
import fs from 'node:fs';
import path from 'node:path';

function atoms(bytes) {
    const found = new Map();
    for (let at = 0; at + 8 <= bytes.length; at += bytes.readUInt32BE(at)) {
        const size = bytes.readUInt32BE(at);
        found.set(bytes.toString('latin1', at + 4, at + 8), bytes.subarray(at, at + size));
        if (size < 8) break;
    }
    return found;
}

// A movie whose tables stand behind media data of a size.
export function writeMovie(samples, target, size) {
    const {ftyp, moov} = Object.fromEntries(atoms(fs.readFileSync(path.join(samples, 'quicktime/h264-aac.mov'))));
    const fd = fs.openSync(target, 'w');
    const head = Buffer.alloc(16);
    head.writeUInt32BE(1, 0);
    head.write('mdat', 4, 'latin1');
    head.writeBigUInt64BE(BigInt(size), 8);
    fs.writeSync(fd, Buffer.concat([ftyp, head]), 0, null, 0);
    fs.writeSync(fd, moov, 0, moov.length, ftyp.length + size);
    fs.closeSync(fd);
}

// An MXF file of a size whose picture elements have `step` bytes each.
export function writeMxf(samples, target, size, step) {
    const sample = fs.readFileSync(path.join(samples, 'mxf/op1a-mpeg2.mxf'));
    const picture = Buffer.from('060e2b34010201010d01030115010500', 'hex');
    const headEnd = sample.indexOf(picture);
    const fd = fs.openSync(target, 'w');
    fs.writeSync(fd, sample, 0, headEnd, 0);
    const key = Buffer.concat([picture, Buffer.from([0x83, step >> 16 & 255, step >> 8 & 255, step & 255])]);
    let at = headEnd;
    for (; at < size; at += key.length + step) fs.writeSync(fd, key, 0, key.length, at);
    fs.ftruncateSync(fd, at);
    fs.closeSync(fd);
}

// A file of a size whose bytes are no zeros.
export function writeNoise(target, size) {
    const part = Buffer.alloc(1 << 20);
    for (let i = 0, state = 1; i < part.length; i++) {
        state = state * 48271 % 0x7fffffff;
        part[i] = state;
    }
    const fd = fs.openSync(target, 'w');
    for (let at = 0; at < size; at += part.length) fs.writeSync(fd, part, 0, Math.min(part.length, size - at), at);
    fs.closeSync(fd);
}
