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

/** What is true of a file, by the columns of keldump-table; null where it is not known. */
export interface Facts {
    file: string;
    format: string | null;
    width: number | null;
    height: number | null;
    bit_depth: number | null;
    codec: string | null;
    frame_rate: number | null;
    /** Seconds. */
    duration: number | null;
    channels: number | null;
    sample_rate: number | null;
    timecode: string | null;
    keycode: string | null;
    reel: string | null;
    problem: string | null;
    size: number | null;
    more: Record<string, string>;
    [column: string]: string | number | boolean | null | Record<string, string>;
}
export function facts(file: string | URL): Facts;
