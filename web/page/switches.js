// The command's switches in words, their letters as hints.

const CHOICES = [
    {id: 'view', title: 'View', options: [
        {text: 'fields', switches: []},
        {text: 'hex dump', hint: '-h', switches: ['-h']},
        {text: 'hex dump of all', hint: '-h=0,…', switches: size => [`-h=0,${size.toString(16)}`]},
        {text: 'text', hint: '-d', switches: ['-d']},
        {text: 'strings', hint: '-s', switches: ['-s']},
    ]},
    {id: 'details', title: 'Details', options: [
        {text: 'normal', switches: []},
        {text: 'more details', hint: '-v', switches: ['-v']},
        {text: 'still more', hint: '-v -v', switches: ['-v', '-v']},
        {text: 'all details', hint: '-v -v -v', switches: ['-v', '-v', '-v']},
    ]},
];
const MARKS = [
    {text: 'samples', hint: '-a', title: 'Every audio sample in hexadecimal'},
    {text: 'timecode', hint: '-t', title: 'Timecode burned into DPX pictures, or carried in audio samples'},
    {text: 'pixels', hint: '-p', title: 'The first pixels of a TIFF (with more details)'},
    {text: 'label bytes', hint: '-mx', title: 'MXF labels as separate bytes'},
    {text: 'no positions', hint: '-mc', title: 'MXF without file positions'},
    {text: 'large items', hint: '-ml', title: 'MXF items up to 1 GiB, names collected over the whole file'},
    {text: 'UTF-8', hint: '-u', title: 'Text files as UTF-8'},
];

function label(text, hint) {
    const parts = [text];
    if (hint) {
        const element = document.createElement('small');
        element.textContent = hint;
        parts.push(' ', element);
    }
    return parts;
}

// Fills `box` with the controls; `changed` is called when one is used.
export class Switches {
    constructor(box, changed) {
        this.selects = CHOICES.map(choice => {
            const select = document.createElement('select');
            select.id = choice.id;
            select.setAttribute('aria-label', choice.title);
            choice.options.forEach(option => select.add(new Option(option.hint ? `${option.text}  ${option.hint}` : option.text)));
            select.addEventListener('change', changed);
            return select;
        });
        this.marks = MARKS.map(mark => {
            const element = document.createElement('label');
            element.className = 'switch';
            element.title = mark.title;
            const input = document.createElement('input');
            input.type = 'checkbox';
            input.addEventListener('change', changed);
            element.append(input, ...label(mark.text, mark.hint));
            return {element, input, hint: mark.hint};
        });
        box.append(...this.selects, ...this.marks.map(mark => mark.element));
    }

    // Those of the details alone.
    get details() {
        return CHOICES[1].options[this.selects[1].selectedIndex].switches;
    }
    // The fields of a dump, with those details and nothing else.
    setDetails(switches) {
        this.selects[0].selectedIndex = 0;
        this.selects[1].selectedIndex = CHOICES[1].options.findIndex(option => option.switches.length === switches.length);
        for (const {input} of this.marks) input.checked = false;
    }
    // As the command has them, for a file of a size.
    list(size) {
        const chosen = CHOICES.flatMap((choice, i) => {
            const {switches} = choice.options[this.selects[i].selectedIndex];
            return typeof switches === 'function' ? switches(size) : switches;
        });
        return [...chosen, ...this.marks.filter(mark => mark.input.checked).map(mark => mark.hint)];
    }
}
