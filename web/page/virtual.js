// A list of any number of rows, of which only those that can be seen are elements. Browsers limit how tall an element can
// be: beyond that the scroll bar's position is scaled, while wheel and keys move by rows.

const TALLEST = 8e6;  // pixels

export class VirtualList {
    // `box` scrolls; `render(row, element, index)` fills an element for a row.
    constructor(box, rowHeight, render) {
        this.box = box;
        this.rowHeight = rowHeight;
        this.render = render;
        this.count = 0;
        this.top = 0;  // the first row that is seen, with a fraction
        this.elements = [];
        this.spacer = document.createElement('div');
        this.spacer.className = 'spacer';
        this.layer = document.createElement('div');
        this.layer.className = 'rows';
        this.layer.setAttribute('role', 'presentation');
        this.spacer.append(this.layer);
        box.append(this.spacer);
        box.addEventListener('scroll', () => this.scrolled());
        box.addEventListener('wheel', event => this.wheeled(event), {passive: false});
        new ResizeObserver(() => this.resized()).observe(box);
    }

    get pixels() {
        return this.count * this.rowHeight;
    }
    get isScaled() {
        return this.pixels > TALLEST;
    }
    // Rows that are seen whole.
    get page() {
        return Math.max(1, Math.floor(this.box.clientHeight / this.rowHeight));
    }
    get lastTop() {
        return Math.max(0, this.count - this.box.clientHeight / this.rowHeight);
    }

    setCount(count) {
        this.count = count;
        this.spacer.style.height = `${Math.min(this.pixels, TALLEST)}px`;
        this.top = Math.min(this.top, this.lastTop);
        this.schedule();
    }
    setRowHeight(height) {
        this.rowHeight = height;
        this.setCount(this.count);
        this.moveTo(this.top);
    }
    resized() {
        this.moveTo(this.top);
    }

    moveTo(top) {
        this.top = Math.max(0, Math.min(top, this.lastTop));
        const range = this.box.scrollHeight - this.box.clientHeight;
        const scroll = this.isScaled ? this.lastTop > 0 ? this.top / this.lastTop * range : 0 : this.top * this.rowHeight;
        this.expected = Math.round(scroll);
        this.box.scrollTop = this.expected;
        this.schedule();
    }
    // Scrolls as little as shows a row; with `centred` a row that is not seen comes to the middle.
    show(row, centred = false) {
        if (row >= this.top && row + 1 <= this.top + this.page) return this.schedule();
        if (centred) this.moveTo(row - this.page / 2);
        else this.moveTo(row < this.top ? row : row + 1 - this.box.clientHeight / this.rowHeight);
    }

    scrolled() {
        if (this.expected !== undefined && Math.abs(this.box.scrollTop - this.expected) <= 1) return this.schedule();
        this.expected = undefined;
        const range = this.box.scrollHeight - this.box.clientHeight;
        this.top = this.isScaled ? this.box.scrollTop / Math.max(1, range) * this.lastTop : this.box.scrollTop / this.rowHeight;
        this.schedule();
    }
    wheeled(event) {
        if (!this.isScaled || event.ctrlKey || event.shiftKey || event.deltaY === 0) return;
        event.preventDefault();
        const unit = event.deltaMode === 1 ? 3 : event.deltaMode === 2 ? this.page : 1 / this.rowHeight;
        this.moveTo(this.top + event.deltaY * unit);
    }

    schedule() {
        this.frame ??= requestAnimationFrame(() => {
            this.frame = undefined;
            this.draw();
        });
    }
    draw() {
        const first = Math.floor(this.top);
        const shown = Math.min(this.count - first, Math.ceil(this.box.clientHeight / this.rowHeight) + 1);
        while (this.elements.length < shown) {
            const element = document.createElement('div');
            this.elements.push(element);
            this.layer.append(element);
        }
        this.elements.forEach((element, i) => {
            element.hidden = i >= shown;
            if (i < shown) this.render(first + i, element, i);
        });
        const offset = this.box.scrollTop - (this.top - first) * this.rowHeight;
        this.layer.style.transform = `translateY(${offset}px)`;
        this.drawn?.();
    }
    // The row of an element inside the list; -1 for none.
    rowOf(target) {
        const i = this.elements.findIndex(element => element.contains(target));
        return i < 0 ? -1 : Math.floor(this.top) + i;
    }
}
