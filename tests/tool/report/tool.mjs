// What the tests of xel report share. They are run with the tool and a folder of their own.
import { spawnSync } from "node:child_process";
import { mkdirSync, readFileSync } from "node:fs";
import { join } from "node:path";

const [, , tool, folder] = process.argv;
mkdirSync(folder, { recursive: true });

/** Runs `xel report` on a trace given as text; the page is the file `name`.html. */
export function report(name, trace) {
  const page = join(folder, `${name}.html`);
  const { status, stderr } = spawnSync(tool, ["report", "-", "-o", page],
    { input: trace, encoding: "utf8", maxBuffer: 1 << 30 });
  return { status, stderr, page };
}

/** The report that a page shows, as data. */
export function dataOf(page) {
  const [, data] = readFileSync(page, "utf8").match(/id="data">(.*?)<\/script>/s);
  return JSON.parse(data);
}
