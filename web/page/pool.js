// Workers that run the module, and what is asked of them.

let source;  // of the workers' script
let tellReady;
const ready = new Promise(resolve => {
    tellReady = resolve;
});

// The text of the workers' script, and the compressed module. Tasks wait for it.
export async function prepare(script, moduleText) {
    source = URL.createObjectURL(new Blob([script], {type: 'text/javascript'}));
    const packed = Uint8Array.from(atob(moduleText.trim()), character => character.charCodeAt(0));
    const stream = new Blob([packed]).stream().pipeThrough(new DecompressionStream('gzip'));
    tellReady(await WebAssembly.compile(await new Response(stream).arrayBuffer()));
}

// A worker with one task at a time. Cancelling ends it; the next task gets a new one.
export class Runner {
    tasks = 0;

    // Resolves with what the task gives at its end; `received` gets what it sends before. Cancelled tasks never end.
    async run(task, message, received = () => {}) {
        const id = ++this.tasks;
        const module = await ready;
        this.worker ??= new Worker(source);
        const {worker} = this;
        return new Promise(resolve => {
            worker.onmessage = ({data}) => {
                if (data.id !== id) return;
                if (data.done) resolve(data);
                else received(data);
            };
            worker.onerror = event => {
                this.cancel();
                resolve({error: event.message || 'the worker ended'});
            };
            worker.postMessage({id, task, module, ...message});
        });
    }
    cancel() {
        this.worker?.terminate();
        this.worker = undefined;
    }
}

// A file's own name never reaches the dump, only its extension does.
export function nameFor(path) {
    const extension = /\.[A-Za-z0-9]{1,8}$/.exec(path);
    return `file${extension ? extension[0] : ''}`;
}
