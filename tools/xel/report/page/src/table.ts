import { button, element } from "./dom";
import { number } from "./format";

export interface Column<Row> {
  name: string;
  /** What the cell says; also what a search looks in. */
  text: (row: Row) => string;
  /** In place of the text. */
  node?: (row: Row) => Node;
  /** By what the column is sorted, where that is not its text. */
  order?: (row: Row) => number;
  kind?: "number" | "name" | "code" | "wide";
}

const rowsOfPage = 100;
const collator = new Intl.Collator("en", { numeric: true });

/** A table of any length: sorted by a click on a heading, and shown a page at a time. */
export class DataTable<Row> {
  readonly element: HTMLElement;
  private readonly body = element("tbody");
  private readonly headings: HTMLTableCellElement[];
  private readonly range = element("span", { "aria-live": "polite" });
  private readonly previous = button("Previous", () => this.show(this.page - 1));
  private readonly next = button("Next", () => this.show(this.page + 1));
  private readonly pages = element("div", { class: "pages" }, this.range, this.previous, this.next);
  private shown: Row[];
  private page = 0;
  private sortedBy: Column<Row> | undefined;
  private isAscending = true;
  private filter: (row: Row) => boolean = () => true;
  private readonly texts = new Map<Row, string>();

  constructor(
    caption: string,
    private readonly columns: Column<Row>[],
    private readonly rows: Row[],
    private readonly emptyText: string,
  ) {
    this.shown = rows;
    this.headings = columns.map((column) => {
      const sorter = element("button", { type: "button" }, column.name);
      sorter.addEventListener("click", () => this.sortBy(column));
      return element("th", { scope: "col", class: column.kind ?? "" }, sorter);
    });
    const table = element(
      "table",
      {},
      element("caption", { class: "hidden" }, caption),
      element("thead", {}, element("tr", {}, ...this.headings)),
      this.body,
    );
    const scroller = { class: "scroller", tabindex: "0", role: "region", "aria-label": caption };
    this.element = element("div", { class: "table" }, element("div", scroller, table), this.pages);
    this.show(0);
  }

  /** The text of a row in lower case, as a search sees it. */
  textOf(row: Row): string {
    let text = this.texts.get(row);
    if (text === undefined) {
      text = this.columns
        .map((column) => column.text(row))
        .join("\n")
        .toLowerCase();
      this.texts.set(row, text);
    }
    return text;
  }

  /** @returns how many rows pass. */
  setFilter(filter: (row: Row) => boolean): number {
    this.filter = filter;
    this.refresh();
    return this.shown.length;
  }

  /** Turns to the page of a row and marks it. */
  reveal(row: Row): void {
    const index = this.shown.indexOf(row);
    if (index < 0) return;
    this.show(Math.floor(index / rowsOfPage));
    const line = this.body.rows[index % rowsOfPage];
    line?.classList.add("revealed");
    line?.scrollIntoView({ block: "center" });
  }

  private sortBy(column: Column<Row>): void {
    this.isAscending = this.sortedBy === column ? !this.isAscending : true;
    this.sortedBy = column;
    this.headings.forEach((heading, index) => {
      if (this.columns[index] !== column) return heading.removeAttribute("aria-sort");
      heading.setAttribute("aria-sort", this.isAscending ? "ascending" : "descending");
    });
    this.refresh();
  }

  private refresh(): void {
    this.shown = this.rows.filter(this.filter);
    const column = this.sortedBy;
    if (column) {
      const direction = this.isAscending ? 1 : -1;
      const { order } = column;
      this.shown.sort(
        (a, b) =>
          direction *
          (order ? order(a) - order(b) : collator.compare(column.text(a), column.text(b))),
      );
    }
    this.show(0);
  }

  private show(page: number): void {
    this.page = page;
    const first = page * rowsOfPage;
    const rows = this.shown.slice(first, first + rowsOfPage);
    this.body.replaceChildren(...rows.map((row) => this.line(row)));
    if (rows.length === 0) {
      const cell = element("td", { colspan: String(this.columns.length) }, this.emptyText);
      this.body.append(element("tr", {}, cell));
    }
    const total = this.shown.length;
    this.range.textContent = `${number(first + 1)}–${number(first + rows.length)} of ${number(total)}`;
    this.previous.disabled = page === 0;
    this.next.disabled = first + rowsOfPage >= total;
    this.pages.hidden = total <= rowsOfPage;
  }

  private line(row: Row): HTMLTableRowElement {
    const cells = this.columns.map((column) => {
      const content = column.node?.(row) ?? column.text(row);
      return element("td", { class: column.kind ?? "" }, content);
    });
    return element("tr", {}, ...cells);
  }
}
