// What the module asks of its system (WASI preview 1), over files that node or the page gives it.
//
// A handle has: type ('file', 'directory', 'link', 'block', 'characters', 'pipe'), isSeekable, size(), read(bytes, position),
// write(bytes, position), close(); position null: where it stands. What fails throws an Error with a `code` ('ENOENT').

const ERRNO = {
    EACCES: 2, EAGAIN: 6, EBADF: 8, EBUSY: 10, EEXIST: 20, EFBIG: 22, EIDRM: 24, EINTR: 27, EINVAL: 28, EIO: 29, EISDIR: 31,
    ELOOP: 32, EMFILE: 33, ENAMETOOLONG: 37, ENFILE: 41, ENODEV: 43, ENOENT: 44, ENOMEM: 48, ENOSPC: 51, ENOSYS: 52,
    ENOTDIR: 54, ENXIO: 60, EPERM: 63, EPIPE: 64, EROFS: 69, ESPIPE: 70, ETXTBSY: 74,
};
const TYPES = {block: 1, characters: 2, directory: 3, file: 4, pipe: 6, link: 7};
const ALL_RIGHTS = 0x1fffffffn;
const RIGHT_TO_WRITE = 1n << 6n;
const CREATE = 1, EXCLUSIVE = 4, TRUNCATE = 8;
const FOLLOW = 1;
const ENTRY_SIZE = 24;  // of a directory, without its name

// The directory that names begin at; they come as they were given.
const ROOT = '.';
const FIRST_OPENED = 4;

export class Failure extends Error {
    constructor(code) {
        super(code);
        this.code = code;
    }
}

class Exit {
    constructor(status) {
        this.status = status;
    }
}

class System {
    constructor(args, files) {
        this.files = files;
        this.args = args.map(encoded);
        this.environment = Object.entries(files.environment ?? {}).map(([name, value]) => encoded(`${name}=${value}`));
        this.open = files.standard.map(handle => ({handle, position: null}));
        this.open.push({root: ROOT});
    }

    // The memory grows, which gives it a new buffer.
    get view() {
        if (this.lastView?.buffer !== this.memory.buffer) this.lastView = new DataView(this.memory.buffer);
        return this.lastView;
    }
    bytes(at, size) {
        return new Uint8Array(this.memory.buffer, at, size);
    }

    entry(fd) {
        const entry = this.open[fd];
        if (!entry) throw new Failure('EBADF');
        return entry;
    }
    handle(fd) {
        const {handle} = this.entry(fd);
        if (!handle) throw new Failure('EISDIR');
        return handle;
    }

    // Has `transfer` read or write each of a list of ranges, until one is not done whole; the count done.
    transfer(list, count, position, transfer) {
        let done = 0;
        for (let i = 0; i < count; i++) {
            const range = this.bytes(this.view.getUint32(list + 8 * i, true), this.view.getUint32(list + 8 * i + 4, true));
            const n = transfer(range, position === null ? null : position + done);
            done += n;
            if (n < range.length) break;
        }
        return done;
    }

    // A list of texts as C has it.
    putTexts(texts, pointers, buffer) {
        for (const text of texts) {
            this.view.setUint32(pointers, buffer, true);
            this.bytes(buffer, text.length).set(text);
            pointers += 4;
            buffer += text.length;
        }
    }
    putSizes(texts, count, size) {
        this.view.setUint32(count, texts.length, true);
        this.view.setUint32(size, texts.reduce((sum, text) => sum + text.length, 0), true);
    }

    // Where its system keeps the position (null), that moves by itself.
    advance(entry, n) {
        if (entry.position !== null) entry.position += n;
    }
}

function encoded(text) {
    return new TextEncoder().encode(`${text}\0`);
}

const calls = {
    args_sizes_get: (system, count, size) => system.putSizes(system.args, count, size),
    args_get: (system, pointers, buffer) => system.putTexts(system.args, pointers, buffer),
    environ_sizes_get: (system, count, size) => system.putSizes(system.environment, count, size),
    environ_get: (system, pointers, buffer) => system.putTexts(system.environment, pointers, buffer),

    clock_time_get(system, clock, precision, result) {
        const now = clock === 0 ? Date.now() : performance.now();
        system.view.setBigUint64(result, BigInt(Math.round(now * 1e6)), true);
    },

    fd_advise() {},

    fd_close(system, fd) {
        system.handle(fd).close();
        system.open[fd] = undefined;
    },

    fd_fdstat_get(system, fd, result) {
        const {root, handle} = system.entry(fd);
        system.bytes(result, 24).fill(0);
        system.view.setUint8(result, TYPES[root ? 'directory' : handle.type]);
        system.view.setBigUint64(result + 8, ALL_RIGHTS, true);
        system.view.setBigUint64(result + 16, ALL_RIGHTS, true);
    },

    fd_fdstat_set_flags() {},

    fd_filestat_get(system, fd, result) {
        putStatus(system, system.handle(fd), result);
    },

    fd_prestat_get(system, fd, result) {
        const {root} = system.entry(fd);
        if (!root) throw new Failure('EBADF');
        system.view.setUint32(result, 0, true);
        system.view.setUint32(result + 4, root.length, true);
    },

    fd_prestat_dir_name(system, fd, name, size) {
        system.bytes(name, size).set(new TextEncoder().encode(system.entry(fd).root).subarray(0, size));
    },

    fd_read(system, fd, list, count, result) {
        const handle = system.handle(fd);
        const entry = system.entry(fd);
        const done = system.transfer(list, count, entry.position, (bytes, at) => handle.read(bytes, at));
        system.advance(entry, done);
        system.view.setUint32(result, done, true);
    },

    fd_pread(system, fd, list, count, offset, result) {
        const handle = system.handle(fd);
        if (!handle.isSeekable) throw new Failure('ESPIPE');
        const done = system.transfer(list, count, Number(offset), (bytes, at) => handle.read(bytes, at));
        system.view.setUint32(result, done, true);
    },

    fd_write(system, fd, list, count, result) {
        const handle = system.handle(fd);
        const entry = system.entry(fd);
        const done = system.transfer(list, count, entry.position, (bytes, at) => handle.write(bytes, at));
        system.advance(entry, done);
        system.view.setUint32(result, done, true);
    },

    fd_pwrite(system, fd, list, count, offset, result) {
        const handle = system.handle(fd);
        const done = system.transfer(list, count, Number(offset), (bytes, at) => handle.write(bytes, at));
        system.view.setUint32(result, done, true);
    },

    // Names from the one on that `cookie` says, the last of them cut where the room ends.
    fd_readdir(system, fd, buffer, size, cookie, result) {
        const entry = system.entry(fd);
        if (Number(cookie) === 0) entry.list = system.files.list(entry.name);
        let used = 0;
        for (let i = Number(cookie); i < entry.list.length && used < size; i++) {
            const {name, type} = entry.list[i];
            const bytes = new Uint8Array(ENTRY_SIZE + name.length);
            const view = new DataView(bytes.buffer);
            view.setBigUint64(0, BigInt(i + 1), true);
            view.setBigUint64(8, 1n, true);  // a number that it has
            view.setUint32(16, name.length, true);
            view.setUint8(20, TYPES[type] ?? 0);
            bytes.set(name, ENTRY_SIZE);
            const part = bytes.subarray(0, size - used);
            system.bytes(buffer + used, part.length).set(part);
            used += part.length;
        }
        system.view.setUint32(result, used, true);
    },

    fd_seek(system, fd, offset, whence, result) {
        const handle = system.handle(fd);
        if (!handle.isSeekable) throw new Failure('ESPIPE');
        const entry = system.entry(fd);
        const from = whence === 0 ? 0 : whence === 1 ? entry.position ?? 0 : handle.size();
        const position = from + Number(offset);
        if (position < 0) throw new Failure('EINVAL');
        entry.position = position;
        system.view.setBigUint64(result, BigInt(position), true);
    },

    path_open(system, fd, lookup, path, size, how, rights, inherited, flags, result) {
        const name = pathOf(system, path, size);
        const write = (BigInt(rights) & RIGHT_TO_WRITE) !== 0n;
        const handle = system.files.open(name, {
            write, create: (how & CREATE) !== 0, exclusive: (how & EXCLUSIVE) !== 0, truncate: (how & TRUNCATE) !== 0,
        });
        let free = system.open.indexOf(undefined);
        if (free < 0) free = system.open.length;
        system.open[free] = {handle, name, position: handle.isSeekable ? 0 : null};
        system.view.setUint32(result, free, true);
    },

    path_filestat_get(system, fd, lookup, path, size, result) {
        const name = pathOf(system, path, size);
        if (system.files.status) {
            putStatus(system, system.files.status(name, (lookup & FOLLOW) !== 0), result);
            return;
        }
        const handle = system.files.open(name, {});
        try {
            putStatus(system, handle, result);
        } finally {
            handle.close();
        }
    },

    // Whatever is waited for may be there a little later.
    poll_oneoff(system, wanted, happened, count, result) {
        system.files.pause?.();
        for (let i = 0; i < count; i++) {
            const event = happened + 32 * i;
            system.bytes(event, 32).fill(0);
            system.bytes(event, 8).set(system.bytes(wanted + 48 * i, 8));
            system.view.setUint8(event + 10, system.view.getUint8(wanted + 48 * i + 8));
        }
        system.view.setUint32(result, count, true);
    },
};

// As text; as bytes where it is none.
function pathOf(system, path, size) {
    const bytes = system.bytes(path, size).slice();
    try {
        return new TextDecoder('utf-8', {fatal: true, ignoreBOM: true}).decode(bytes);
    } catch {
        return bytes;
    }
}

function putStatus(system, handle, result) {
    system.bytes(result, 64).fill(0);
    system.view.setUint8(result + 16, TYPES[handle.type]);
    system.view.setBigUint64(result + 24, 1n, true);
    system.view.setBigUint64(result + 32, BigInt(handle.size()), true);
}

function errnoOf(error) {
    if (!(error instanceof Error) || error.code === undefined) throw error;
    return ERRNO[error.code] ?? ERRNO.EIO;
}

// Runs a command in an instance of its own, as a run may leave nothing behind; its exit status. `args` begins with the
// command's name; `files` gives `standard` (three handles), open(name, {write, create, exclusive, truncate}), and may
// give `environment`, pause(), status(name, follows) ({type, size()}, of a link itself or what it leads to) and
// list(name), the names in a directory as bytes ({name, type}).
export function run(module, args, files) {
    const system = new System(args, files);
    const imports = {
        proc_exit(status) {
            throw new Exit(status);
        },
    };
    for (const [name, call] of Object.entries(calls)) {
        imports[name] = (...values) => {
            try {
                call(system, ...values);
                return 0;
            } catch (error) {
                return errnoOf(error);
            }
        };
    }
    const instance = new WebAssembly.Instance(module, {wasi_snapshot_preview1: imports});
    system.memory = instance.exports.memory;
    try {
        instance.exports._start();
        return 0;
    } catch (error) {
        if (error instanceof Exit) return error.status;
        throw error;
    } finally {
        for (const entry of system.open.slice(FIRST_OPENED)) entry?.handle?.close();
    }
}
