// The package for node beside the native command: output, statuses, written files.
import assert from 'node:assert';
import {spawnSync} from 'node:child_process';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import test from 'node:test';
import {fileURLToPath} from 'node:url';

import {dump, facts} from '../../build-wasi/npm/package/keldump.js';
import {madeFiles} from './made.js';
import {recordedDumps} from './recorded.js';

const ROOT = fileURLToPath(new URL('../..', import.meta.url));
const NATIVE = path.join(ROOT, 'build/keldump');
const NATIVE_JSON = path.join(ROOT, 'build/keldump-json');
const NATIVE_TABLE = path.join(ROOT, 'build/keldump-table');
const CLI = path.join(ROOT, 'build-wasi/npm/package/cli.js');
const sample = name => path.join(ROOT, 'samples', name);

function workplace() {
    return fs.mkdtempSync(path.join(os.tmpdir(), 'keldump-test-'));
}

function result(command, args, options) {
    const {status, stdout, stderr} = spawnSync(command, args, options);
    return {status, stdout: stdout.toString('latin1'), stderr: stderr.toString()};
}

function assertSame(args, options = {}) {
    const cwd = options.cwd ?? workplace();
    const expected = result(NATIVE, args, {...options, cwd});
    assert.deepEqual(result(process.execPath, [CLI, ...args], {...options, cwd}), expected, args.join(' '));
    return expected;
}

// A codestream with a quantization segment for a component that it does not have.
function impossibleCodestream() {
    const bytes = fs.readFileSync(sample('jpeg2000/lossy.j2k'));
    const behindSize = 4 + bytes.readUInt16BE(4);
    const segment = Buffer.from([0xff, 0x5d, 0, 5, 9, 0, 0]);
    return Buffer.concat([bytes.subarray(0, behindSize), segment, bytes.subarray(behindSize)]);
}

test('the recorded dumps of the samples', () => {
    const before = process.cwd();
    const recorded = recordedDumps();
    assert(recorded.length > 90);
    for (const {sample, switches, text} of recorded) {
        process.chdir(path.dirname(sample));
        assert.equal(dump(path.basename(sample), {switches}), fs.readFileSync(text).toString(), text);
    }
    process.chdir(before);
});

test('damaged and made files', () => {
    const cwd = workplace();
    const before = process.cwd();
    process.chdir(cwd);
    for (const {name, bytes, switches} of madeFiles(sample(''))) {
        fs.writeFileSync(name, bytes);
        const expected = spawnSync(NATIVE, [...switches, name], {maxBuffer: 1 << 30}).stdout;
        assert.equal(dump(name, {switches}), expected.toString(), `${name} ${switches}`);
    }
    process.chdir(before);
    fs.rmSync(cwd, {recursive: true});
});

test('statuses, names and messages', () => {
    const cwd = workplace();
    assert.equal(assertSame([]).status, 255);
    assertSame(['verify']);
    assertSame(['-q', 'x']);
    assertSame(['none']);
    assertSame(['']);
    assertSame(['a%s']);
    assertSame([cwd]);
    assertSame([`${cwd}/../none`]);
    assertSame(['/dev/null']);
    assertSame(['a.%04d.dpx', '99999999999', '1']);
    assertSame([sample('dpx/rgb%d-big.dpx'), '8', '2']);
    fs.writeFileSync(path.join(cwd, 'impossible.j2k'), impossibleCodestream());
    assert.equal(assertSame(['impossible.j2k'], {cwd}).status, 1);
});

test('standard input', () => {
    const input = fs.readFileSync(sample('raw/image.png'));
    assertSame(['/dev/stdin'], {input});
    assertSame(['-s', '/dev/stdin'], {stdio: [fs.openSync(sample('raw/image.png')), 'pipe', 'pipe']});
});

test('written frames', () => {
    const file = sample('mxf/op1a-jpeg2000.mxf');
    const [native, ours] = [workplace(), workplace()];
    spawnSync(NATIVE, ['-ms', file], {cwd: native});
    spawnSync(process.execPath, [CLI, '-ms', file], {cwd: ours});
    assert.equal(fs.readdirSync(native).length, 3);
    for (const name of fs.readdirSync(native))
        assert(fs.readFileSync(path.join(native, name)).equals(fs.readFileSync(path.join(ours, name))), name);
    assertSame(['-ms=none/x%d.jpc', file]);
});

test('lines as data', () => {
    const file = sample('dpx/film10-little.dpx');
    const [expected] = JSON.parse(spawnSync(NATIVE_JSON, ['-v', file]).stdout);
    assert.deepEqual(dump(file, {switches: ['-v'], lines: true}), expected);
    assert.throws(() => dump(file, {switches: ['-q'], lines: true}), TypeError);
    assert.equal(dump('none', {lines: true}).message, 'could not open file');
    const cwd = workplace();
    const impossible = path.join(cwd, 'impossible.j2k');
    fs.writeFileSync(impossible, impossibleCodestream());
    assert.equal(dump(impossible, {lines: true}).status, 1);
});

test('facts', () => {
    const files = [...new Set(recordedDumps().map(one => one.sample))];
    const expected = spawnSync(NATIVE_TABLE, ['--each', '--lines', ...files], {maxBuffer: 1 << 30}).stdout.toString().trim().split('\n').map(line => JSON.parse(line));
    assert.equal(expected.length, files.length);
    files.forEach(file => assert.deepEqual(facts(file), expected.find(row => row.file === file)));
    assert.equal(facts('none').problem, 'No such file or directory');
});
