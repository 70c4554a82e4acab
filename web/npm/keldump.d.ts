export interface Line {
    /** The sections around the line and its own label; one that the file names is an object. */
    path: (string | {name: string; own: false})[];
    index?: number[];
    text: string;
    values?: (string | number | null)[];
    /** The bytes of the file that the line was made of: offset and size. */
    at?: [number, number][];
    listing?: true;
    open?: true;
}
export interface Dump {
    file: string;
    format: string | null;
    schema: 1;
    lines: Line[];
    message?: string;
    status?: number;
}
export function dump(file: string | URL, options?: {switches?: string[]; lines?: false}): string;
export function dump(file: string | URL, options: {switches?: string[]; lines: true}): Dump;
