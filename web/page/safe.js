// Text of files as it may be shown: control characters, bytes that are no UTF-8 and characters that turn the direction of
// writing or cannot be seen are escaped, as commands do it for a terminal.

const decoder = new TextDecoder('utf-8', {fatal: true});

const HIDDEN = /[\u0000-\u001f\u007f-\u009f\u061c\u200b-\u200f\u2028-\u202e\u2060-\u206f\ufeff\ufff9-\ufffb]|[\u{e0000}-\u{e0fff}]/gu;

function escaped(character) {
    const code = character.codePointAt(0);
    if (code < 0x100) return `\\x${code.toString(16).padStart(2, '0')}`;
    return `\\u${code > 0xffff ? `{${code.toString(16)}}` : code.toString(16).padStart(4, '0')}`;
}

function isPlain(bytes) {
    for (const byte of bytes) {
        if (byte < 0x20 || byte > 0x7e) return false;
    }
    return true;
}

// Bytes that are not UTF-8 as \xNN, the characters around them as they are.
function decodeMixed(bytes) {
    let text = '';
    for (let at = 0; at < bytes.length;) {
        const lead = bytes[at];
        const size = lead < 0x80 ? 1 : lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
        try {
            text += decoder.decode(bytes.subarray(at, at + size)).replace(HIDDEN, escaped);
            at += size;
        } catch {
            text += `\\x${lead.toString(16)}`;
            at++;
        }
    }
    return text;
}

export function safeText(bytes) {
    if (isPlain(bytes)) return bytes.length < 4096 ? String.fromCharCode(...bytes) : decoder.decode(bytes);
    try {
        return decoder.decode(bytes).replace(HIDDEN, escaped);
    } catch {
        return decodeMixed(bytes);
    }
}

export function safeName(name) {
    return name.replace(HIDDEN, escaped);
}
