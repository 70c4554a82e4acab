// The dump of one file as it grows: a worker's run, its end, and more of it where the page stopped.
import {END, Lines} from './lines.js';
import {Runner, nameFor} from './pool.js';

const MOST_LINES = 4e6;
const MOST_BYTES = 256 * 1024 * 1024;

export class Dump {
    state = 'running';  // then 'done', 'stopped' (there is more), 'cancelled', 'failed'
    message = '';
    status = 0;
    requests = 0;
    bytesRead = 0;

    // `changed` is called when lines came, and at the end.
    constructor({file, path}, switches, changed) {
        this.file = file;
        this.path = path;
        this.name = nameFor(path);
        this.switches = switches;
        this.changed = changed;
        this.lines = new Lines();
        this.runner = new Runner();
        this.run();
    }

    async run() {
        this.state = 'running';
        this.started = performance.now();
        const limits = ['--skip', `${this.lines.count}`, '--lines', `${MOST_LINES}`, '--bytes', `${MOST_BYTES}`];
        let end = END.none;
        const result = await this.runner.run('lines', {file: this.file, name: this.name, switches: this.switches, limits}, ({block}) => {
            end = this.lines.add(block);
            this.changed();
        });
        this.milliseconds = performance.now() - this.started;
        this.requests = result.requests ?? 0;
        this.bytesRead = result.bytesRead ?? 0;
        if (result.error) this.fail(`The dump ended: ${result.error}`);
        else if (result.hasChanged) this.fail('The file changed, or can no longer be read: choose it anew.');
        else if (end === END.unopened) this.fail('The file cannot be read.');
        else this.state = end === END.stopped ? 'stopped' : 'done';
        this.runner.cancel();  // its memory with it
        this.changed();
    }
    fail(message) {
        this.state = 'failed';
        this.message = message;
    }
    cancel() {
        if (this.state !== 'running') return;
        this.runner.cancel();
        this.state = 'cancelled';
        this.changed();
    }
    // Forgets what comes yet.
    close() {
        this.changed = () => {};
        this.runner.cancel();
    }
    goOn() {
        if (this.state === 'stopped') this.run();
    }
}
