// Joins our modules to one script: each becomes a function's scope, in the order in which they need each other. Imports
// and exports take the forms that these modules use: import {a, b} from './x.js'; export function, class, const.
import fs from 'node:fs';
import path from 'node:path';

const IMPORT = /^import \{([^}]*)\} from '(\.[^']*)';\n/gm;
const EXPORT = /^export (async function|function|class|const|let) (\w+)/gm;

export function bundle(entry) {
    const order = [];  // of paths, what is needed first
    const sources = new Map();
    const visit = (file, importers) => {
        if (importers.includes(file)) throw new Error(`${file} needs itself`);
        if (sources.has(file)) return;
        const source = fs.readFileSync(file, 'utf8');
        sources.set(file, source);
        for (const [, , needed] of source.matchAll(IMPORT)) visit(path.resolve(path.dirname(file), needed), [...importers, file]);
        order.push(file);
    };
    visit(path.resolve(entry), []);
    const name = file => `module${order.indexOf(file)}`;
    const parts = order.map(file => {
        const source = sources.get(file);
        const exported = [...source.matchAll(EXPORT)].map(match => match[2]);
        const body = source
            .replace(IMPORT, (all, names, needed) => `const {${names}} = ${name(path.resolve(path.dirname(file), needed))};\n`)
            .replace(EXPORT, '$1 $2');
        return `const ${name(file)} = (() => {\n${body}return {${exported.join(', ')}};\n})();\n`;
    });
    return `'use strict';\n${parts.join('')}`;
}
