// Bundles the page into one HTML file, named by the argument, that asks the network for nothing.
import { createHash } from "node:crypto";
import { readFileSync, writeFileSync } from "node:fs";
import { build } from "esbuild";

const source = new URL("src/", import.meta.url);
const { outputFiles } = await build({
  absWorkingDir: process.cwd(),
  entryPoints: ["page/src/main.ts", "page/src/style.css"],
  preserveSymlinks: true,
  bundle: true,
  minify: true,
  write: false,
  outdir: ".",
  format: "iife",
  target: ["chrome111", "firefox113", "safari16"],
  charset: "utf8",
  legalComments: "inline",
});
const text = (ending) => outputFiles.find((file) => file.path.endsWith(ending)).text.trim();
const script = text(".js");
const parts = {
  style: text(".css"),
  script,
  scriptHash: `sha256-${createHash("sha256").update(script).digest("base64")}`,
};
const template = readFileSync(new URL("page.html", source), "utf8");
writeFileSync(
  process.argv[2],
  template.replace(/\{\{(\w+)\}\}/g, (_, name) => parts[name]),
);
