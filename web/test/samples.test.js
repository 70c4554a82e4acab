// The dumps of the samples by the package for node are those that are kept beside them.
import assert from 'node:assert';
import fs from 'node:fs';
import path from 'node:path';
import test from 'node:test';

import {dump} from '../../build-wasi/npm/package/keldump.js';
import {recordedDumps} from './recorded.js';

test('samples', () => {
    const before = process.cwd();
    const recorded = recordedDumps();
    assert(recorded.length > 90);
    for (const {sample, switches, text} of recorded) {
        process.chdir(path.dirname(sample));
        assert.equal(dump(path.basename(sample), {switches}), fs.readFileSync(text).toString(), text);
    }
    process.chdir(before);
});
