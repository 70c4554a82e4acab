// Texts one behind the other, each behind its size, as the module's entries take and give them.

export function pack(parts) {
    const total = parts.reduce((sum, part) => sum + 4 + part.length, 0);
    const packed = new Uint8Array(total);
    const view = new DataView(packed.buffer);
    let at = 0;
    for (const part of parts) {
        view.setUint32(at, part.length, true);
        packed.set(part, at + 4);
        at += 4 + part.length;
    }
    return packed;
}

export function unpack(packed) {
    const view = new DataView(packed.buffer, packed.byteOffset, packed.length);
    const parts = [];
    for (let at = 0; at < packed.length;) {
        const size = view.getUint32(at, true);
        parts.push(packed.subarray(at + 4, at + 4 + size));
        at += 4 + size;
    }
    return parts;
}
