// A command of the package, as its native one: switches, statuses, output.
import {processFiles} from './files.js';
import {module} from './keldump.js';
import {run} from './shim.js';

const BROKEN_PIPE = 128 + 13;  // as a shell tells of a command that was ended by the signal

// Names have slashes, which Windows takes as well as its own.
const argumentOf = text => process.platform === 'win32' && !text.startsWith('-') ? text.replaceAll('\\', '/') : text;

export function command(name) {
    const files = processFiles();
    const output = files.standard[1];
    const write = output.write.bind(output);
    output.write = (bytes, position) => {
        try {
            return write(bytes, position);
        } catch (error) {
            if (error.code === 'EPIPE') process.exit(BROKEN_PIPE);
            throw error;
        }
    };
    process.exitCode = run(module(), [name, ...process.argv.slice(2).map(argumentOf)], files);
}
