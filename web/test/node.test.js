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
const native = name => path.join(ROOT, 'build', name);
const ours = name => path.join(ROOT, 'build-wasi/npm/package/bin', `${name}.js`);
const NATIVE = native('keldump');
const sample = name => path.join(ROOT, 'samples', name);

function workplace() {
    return fs.mkdtempSync(path.join(os.tmpdir(), 'keldump-test-'));
}

function result(command, args, options) {
    const {status, stdout, stderr} = spawnSync(command, args, options);
    return {status, stdout: stdout.toString('latin1'), stderr: stderr.toString()};
}

function assertSame(args, {command = 'keldump', cwd = workplace(), ...rest} = {}) {
    const options = {...rest, cwd, maxBuffer: 1 << 30};
    const expected = result(native(command), args, options);
    assert.deepEqual(result(process.execPath, [ours(command), ...args], options), expected, `${command} ${args.join(' ')}`);
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
    const [expected, written] = [workplace(), workplace()];
    spawnSync(NATIVE, ['-ms', file], {cwd: expected});
    spawnSync(process.execPath, [ours('keldump'), '-ms', file], {cwd: written});
    assert.equal(fs.readdirSync(expected).length, 3);
    for (const name of fs.readdirSync(expected))
        assert(fs.readFileSync(path.join(expected, name)).equals(fs.readFileSync(path.join(written, name))), name);
    assertSame(['-ms=none/x%d.jpc', file]);
});

// Frames 1 to 20 without the tenth, the fifth cut; beside them what commands leave out, or say that it is not there.
function writeReel(cwd) {
    const frame = fs.readFileSync(sample('dpx/rgb8-big.dpx'));
    const reel = path.join(cwd, 'reel');
    fs.mkdirSync(path.join(reel, '.hidden'), {recursive: true});
    fs.mkdirSync(path.join(reel, 'empty'));
    for (let i = 1; i <= 20; i++)
        if (i !== 10) fs.writeFileSync(path.join(reel, `a.${i}.dpx`), i === 5 ? frame.subarray(0, 3000) : frame);
    fs.writeFileSync(path.join(reel, '.hidden/b.1.dpx'), frame);
    fs.writeFileSync(Buffer.concat([Buffer.from(`${reel}/n`), Buffer.from([0xff, 0x1b]), Buffer.from('.txt')]), 'text');
    fs.symlinkSync('nowhere', path.join(reel, 'gone'));
    fs.symlinkSync('.', path.join(reel, 'loop'));
    spawnSync('mkfifo', [path.join(reel, 'pipe')]);
}

test('every command, over files, directories and sequences', () => {
    const cwd = workplace();
    writeReel(cwd);
    const movie = sample('quicktime/h264-aac.mov');
    const cases = {
        'keldump-all': [['--', 'reel', movie], ['none']],
        'keldump-diff': [[movie, sample('quicktime/prores-timecode.mov')], ['--json', '--all', movie, movie], ['reel', movie]],
        'keldump-json': [['-v', movie], ['--lines', 'reel']],
        'keldump-seq': [['reel'], ['--json', '--frames', '1-22', 'reel/a.%d.dpx'], ['--ignore=cut', '--quiet', '.'], ['reel/pipe', 'b.%d.dpx'], ['-x']],
        'keldump-table': [[sample('')], ['--csv', 'reel', 'none'], ['--odd', sample('mxf')], ['--help']],
    };
    for (const [command, runs] of Object.entries(cases))
        for (const args of runs) assertSame(args, {command, cwd});
    assert.equal(assertSame(['reel'], {command: 'keldump-seq', cwd}).stdout.split('\n').length, 4);
    // As a package's commands are installed: links to the files.
    const link = path.join(cwd, 'keldump-seq');
    fs.symlinkSync(ours('keldump-seq'), link);
    assert.equal(result(link, ['reel'], {cwd}).status, 1);
    fs.rmSync(cwd, {recursive: true});
});

test('lines as data', () => {
    const file = sample('dpx/film10-little.dpx');
    const [expected] = JSON.parse(spawnSync(native('keldump-json'), ['-v', file]).stdout);
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
    const expected = spawnSync(native('keldump-table'), ['--each', '--lines', ...files], {maxBuffer: 1 << 30}).stdout.toString().trim().split('\n').map(line => JSON.parse(line));
    assert.equal(expected.length, files.length);
    files.forEach(file => assert.deepEqual(facts(file), expected.find(row => row.file === file)));
    assert.equal(facts('none').problem, 'No such file or directory');
});
