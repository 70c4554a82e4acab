// The dumps that are kept beside the samples: clip.wav.txt, and clip.wav.-a+-t.txt with the switches -a and -t.
import fs from 'node:fs';
import path from 'node:path';
import {fileURLToPath} from 'node:url';

const SAMPLES = fileURLToPath(new URL('../../samples', import.meta.url));

export function recordedDumps() {
    const recorded = [];
    for (const family of fs.readdirSync(SAMPLES)) {
        const directory = path.join(SAMPLES, family);
        if (!fs.statSync(directory).isDirectory()) continue;
        for (const name of fs.readdirSync(directory).filter(name => name.endsWith('.txt'))) {
            const [, sample, switches] = /^(.*?)(?:\.(-.*))?\.txt$/.exec(name);
            if (!fs.existsSync(path.join(directory, sample))) continue;
            recorded.push({
                sample: path.join(directory, sample),
                switches: switches ? switches.split('+') : [],
                text: path.join(directory, name),
            });
        }
    }
    return recorded;
}
