// A headless Chromium, driven over its debugging pipe.
import {spawn} from 'node:child_process';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import {setTimeout as sleep} from 'node:timers/promises';

const MODIFIERS = {Alt: 1, Control: 2, Meta: 4, Shift: 8};

export class Browser {
    static async start() {
        const browser = new Browser();
        browser.profile = fs.mkdtempSync(path.join(os.tmpdir(), 'keldump-chromium-'));
        browser.process = spawn('chromium', [
            '--headless=new', '--no-sandbox', '--disable-gpu', '--disable-dev-shm-usage', '--no-first-run', '--remote-debugging-pipe',
            '--disable-background-networking', '--disable-component-update', '--disable-sync', '--force-color-profile=srgb',
            `--user-data-dir=${browser.profile}`, '--window-size=1600,900',
        ], {stdio: ['ignore', 'ignore', 'ignore', 'pipe', 'pipe']});
        browser.next = 0;
        browser.waiting = new Map();
        browser.listeners = [];
        let rest = Buffer.alloc(0);
        browser.process.stdio[4].on('data', data => {
            rest = Buffer.concat([rest, data]);
            for (let end; (end = rest.indexOf(0)) >= 0; rest = rest.subarray(end + 1))
                browser.received(JSON.parse(rest.subarray(0, end).toString()));
        });
        return browser;
    }
    received(message) {
        const waiting = this.waiting.get(message.id);
        if (!waiting) {
            for (const listener of this.listeners) listener(message);
            return;
        }
        this.waiting.delete(message.id);
        if (message.error) waiting.fail(new Error(`${waiting.method}: ${message.error.message}`));
        else waiting.done(message.result);
    }
    send(method, params = {}, sessionId) {
        const id = ++this.next;
        this.process.stdio[3].write(`${JSON.stringify({id, method, params, sessionId})}\0`);
        return new Promise((done, fail) => this.waiting.set(id, {done, fail, method}));
    }
    async open(url) {
        const {targetId} = await this.send('Target.createTarget', {url: 'about:blank'});
        const {sessionId} = await this.send('Target.attachToTarget', {targetId, flatten: true});
        const page = new Page(this, sessionId, targetId);
        await page.prepare(url);
        return page;
    }
    async stop() {
        await this.send('Browser.close').catch(() => {});
        await new Promise(resolve => this.process.exitCode === null ? this.process.once('exit', resolve) : resolve());
        fs.rmSync(this.profile, {recursive: true, force: true, maxRetries: 5});
    }
}

export class Page {
    requests = [];
    problems = [];  // uncaught errors, and what the console says of the policy

    constructor(browser, sessionId, targetId) {
        this.browser = browser;
        this.sessionId = sessionId;
        this.targetId = targetId;
        browser.listeners.push(({method, params, sessionId: session}) => {
            if (session !== sessionId) return;
            if (method === 'Network.requestWillBeSent') this.requests.push(params.request.url);
            if (method === 'Runtime.exceptionThrown') this.problems.push(params.exceptionDetails.exception?.description ?? params.exceptionDetails.text);
            if (method === 'Log.entryAdded' && params.entry.level === 'error') this.problems.push(params.entry.text);
            if (method === 'Page.loadEventFired') this.loaded?.();
        });
    }
    send(method, params) {
        return this.browser.send(method, params, this.sessionId);
    }
    async prepare(url) {
        for (const domain of ['Page', 'Runtime', 'Network', 'Log', 'DOM']) await this.send(`${domain}.enable`);
        const loaded = new Promise(resolve => {
            this.loaded = resolve;
        });
        await this.send('Page.navigate', {url});
        await loaded;
        await this.until('document.body.classList.contains("ready") || !document.getElementById("message").hidden');
    }
    async close() {
        await this.browser.send('Target.closeTarget', {targetId: this.targetId});
    }

    async evaluate(expression) {
        const {result, exceptionDetails} = await this.send('Runtime.evaluate', {expression, awaitPromise: true, returnByValue: true, userGesture: true});
        if (exceptionDetails) throw new Error(`${expression}: ${exceptionDetails.exception?.description ?? exceptionDetails.text}`);
        return result.value;
    }
    // Waits until an expression is true.
    async until(expression, seconds = 30) {
        for (const end = Date.now() + seconds * 1000; Date.now() < end; await sleep(20)) {
            const value = await this.evaluate(expression);
            if (value) return value;
        }
        throw new Error(`never: ${expression}\n${this.problems.join('\n')}`);
    }
    text(id) {
        return this.evaluate(`document.getElementById('${id}').textContent`);
    }

    async choose(files, input = 'file-input') {
        const {root} = await this.send('DOM.getDocument');
        const {nodeId} = await this.send('DOM.querySelector', {nodeId: root.nodeId, selector: `#${input}`});
        await this.send('DOM.setFileInputFiles', {nodeId, files});
    }
    async drop(files, x = 800, y = 400) {
        const data = {items: [], files, dragOperationsMask: 1};
        for (const type of ['dragEnter', 'dragOver', 'drop']) await this.send('Input.dispatchDragEvent', {type, x, y, data});
    }
    // 'ArrowDown', 'Control+f', 'a'
    async press(keys, times = 1) {
        const parts = keys.split('+').map(part => part || '+');
        const key = parts.pop();
        const modifiers = parts.reduce((sum, part) => sum | MODIFIERS[part], 0);
        const code = key.length === 1 ? key.toUpperCase().charCodeAt(0) : {Enter: 13, Escape: 27, Tab: 9, Home: 36, End: 35, PageUp: 33,
            PageDown: 34, ArrowLeft: 37, ArrowUp: 38, ArrowRight: 39, ArrowDown: 40, F3: 114, F6: 117}[key];
        const text = key === 'Enter' ? '\r' : key.length === 1 && (modifiers & ~8) === 0 ? key : undefined;
        const commands = modifiers === 2 && key === 'c' ? ['copy'] : undefined;
        for (let i = 0; i < times; i++) {
            await this.send('Input.dispatchKeyEvent', {type: text ? 'keyDown' : 'rawKeyDown', key, text, modifiers, windowsVirtualKeyCode: code, commands});
            await this.send('Input.dispatchKeyEvent', {type: 'keyUp', key, modifiers, windowsVirtualKeyCode: code});
        }
    }
    async type(text) {
        await this.send('Input.insertText', {text});
    }
    async click(selector, {modifiers = 0} = {}) {
        const [x, y] = await this.evaluate(`(() => {
            const {left, top, width, height} = document.querySelector(${JSON.stringify(selector)}).getBoundingClientRect();
            return [left + width / 2, top + height / 2];
        })()`);
        for (const type of ['mousePressed', 'mouseReleased'])
            await this.send('Input.dispatchMouseEvent', {type, x, y, button: 'left', buttons: type === 'mousePressed' ? 1 : 0, clickCount: 1, modifiers});
    }
    async wheel(x, y, deltaY) {
        await this.send('Input.dispatchMouseEvent', {type: 'mouseWheel', x, y, deltaX: 0, deltaY});
    }
    async dark(yes) {
        await this.send('Emulation.setEmulatedMedia', {features: [{name: 'prefers-color-scheme', value: yes ? 'dark' : 'light'}]});
    }
    async size(width, height, scale = 1) {
        await this.send('Emulation.setDeviceMetricsOverride', {width, height, deviceScaleFactor: scale, mobile: false});
    }
    async screenshot(file) {
        await sleep(200);
        const {data} = await this.send('Page.captureScreenshot', {format: 'png'});
        fs.writeFileSync(file, Buffer.from(data, 'base64'));
    }
}
