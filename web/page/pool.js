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

// A worker that does one task after the other. Cancelling ends it; the next task gets a new one.
export class Runner {
    tasks = 0;
    waiting = new Map();  // by their numbers

    // Resolves with what the task gives at its end; `received` gets what it sends before. Cancelled tasks never end.
    async run(task, message, received = () => {}) {
        const id = ++this.tasks;
        const module = await ready;
        this.worker ??= this.started();
        return new Promise(resolve => {
            this.waiting.set(id, {resolve, received});
            this.worker.postMessage({id, task, module, ...message});
        });
    }
    started() {
        const worker = new Worker(source);
        worker.onmessage = ({data}) => {
            const {resolve, received} = this.waiting.get(data.id) ?? {};
            if (!data.done) {
                received?.(data);
                return;
            }
            this.waiting.delete(data.id);
            resolve?.(data);
        };
        worker.onerror = event => {
            const ended = [...this.waiting.values()];
            this.cancel();
            for (const {resolve} of ended) resolve({error: event.message || 'the worker ended'});
        };
        return worker;
    }
    cancel() {
        this.worker?.terminate();
        this.worker = undefined;
        this.waiting.clear();
    }
}

// A file's own name never reaches the dump, only its extension does.
export function nameFor(path) {
    const extension = /\.[A-Za-z0-9]{1,8}$/.exec(path);
    return `file${extension ? extension[0] : ''}`;
}
