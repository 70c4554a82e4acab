// The files of node's machine as the module's system.
import fs from 'node:fs';
import tty from 'node:tty';

import {Failure} from './shim.js';

const SHORT_WAIT = 2;  // milliseconds

function pause() {
    Atomics.wait(new Int32Array(new SharedArrayBuffer(4)), 0, 0, SHORT_WAIT);
}

function typeOf(status) {
    if (status.isFile()) return 'file';
    if (status.isDirectory()) return 'directory';
    if (status.isBlockDevice()) return 'block';
    if (status.isSymbolicLink()) return 'link';
    return status.isCharacterDevice() ? 'characters' : 'pipe';
}

class Handle {
    constructor(fd, isOurs) {
        this.fd = fd;
        this.isOurs = isOurs;
        const status = fs.fstatSync(fd, {bigint: true});
        this.type = typeOf(status);
        this.isSeekable = this.type !== 'pipe' && !tty.isatty(fd);
    }
    size() {
        return fs.fstatSync(this.fd, {bigint: true}).size;
    }
    read(bytes, position) {
        try {
            return fs.readSync(this.fd, bytes, 0, bytes.length, position);
        } catch (error) {
            if (error.code === 'EOF') return 0;  // Windows, of a pipe that was closed
            throw error;
        }
    }
    write(bytes, position) {
        return fs.writeSync(this.fd, bytes, 0, bytes.length, position);
    }
    close() {
        if (this.isOurs) fs.closeSync(this.fd);
    }
}

// Standard output in memory.
class Collector {
    type = 'pipe';
    isSeekable = false;
    pieces = [];

    size() {
        return 0;
    }
    read() {
        throw new Failure('EBADF');
    }
    write(bytes) {
        this.pieces.push(Buffer.from(bytes));
        return bytes.length;
    }
    close() {}
    content() {
        return Buffer.concat(this.pieces);
    }
}

const NOTHING = {
    type: 'characters',
    isSeekable: true,
    size: () => 0,
    read: () => 0,
    write: bytes => bytes.length,
    close() {},
};

function standard(fd) {
    try {
        return new Handle(fd, false);
    } catch {
        return NOTHING;  // closed
    }
}

function open(name, {write, create, exclusive, truncate}) {
    const {O_RDONLY, O_WRONLY, O_CREAT, O_EXCL, O_TRUNC} = fs.constants;
    const flags = (write ? O_WRONLY : O_RDONLY) | (create ? O_CREAT : 0) | (exclusive ? O_EXCL : 0) | (truncate ? O_TRUNC : 0);
    try {
        return new Handle(fs.openSync(name, flags), true);
    } catch (error) {
        // A socket cannot be opened by this name, and not every system has it.
        if (name === '/dev/stdin' && (error.code === 'ENXIO' || error.code === 'ENOENT')) return new Handle(0, false);
        throw error;
    }
}

function status(name, follows) {
    const found = (follows ? fs.statSync : fs.lstatSync)(name, {bigint: true});
    return {type: typeOf(found), size: () => found.size};
}

const list = name => fs.readdirSync(name, {encoding: 'buffer', withFileTypes: true}).map(one => ({name: one.name, type: typeOf(one)}));

// For a command as a user's, and for one whose standard output is collected.
export function processFiles() {
    return {standard: [standard(0), standard(1), standard(2)], open, status, list, pause, environment: process.env};
}
export function collectingFiles(output = new Collector()) {
    return {standard: [NOTHING, output, NOTHING], open, status, list, pause, environment: {}, output};
}
