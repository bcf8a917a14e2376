// The page of xel report in a browser: what it shows, and how it is worked with.
import assert from "node:assert/strict";
import test, { after, before } from "node:test";
import { chromium } from "playwright-core";
import { report } from "./tool.mjs";
import { manyBreaks, trace } from "./traces.mjs";

let browser;
before(async () => {
  browser = await chromium.launch({
    executablePath: "/usr/bin/chromium", args: ["--headless=new", "--no-sandbox"] });
});
after(() => browser.close());

const faulty = trace({ breaks: manyBreaks(2, 2, 60, 15), until: 110, seeks: [{ from: 90, to: 105 }],
  vastOf: () => "<VAST/>",
  answer: ({ pingEvent, ad }) => pingEvent === "midpoint" ? { status: 503, ms: 77 }
    : ad.key === "ad-3" && pingEvent === "complete" ? undefined : { status: 204 } });

/** Opens the page of a trace, and checks afterwards that it was silent and asked for nothing. */
async function onPage(name, text, use, options = {}) {
  const complaints = [];
  const page = await browser.newPage({ viewport: { width: 1280, height: 900 }, ...options });
  page.on("console", (message) => complaints.push(message.text()));
  page.on("pageerror", (error) => complaints.push(error.message));
  page.on("dialog", (dialog) => { complaints.push(dialog.message()); dialog.dismiss(); });
  page.on("request", (request) => {
    if (!request.url().startsWith("file:")) complaints.push(request.url());
  });
  await page.goto(`file://${report(name, text).page}`);
  await page.waitForSelector("canvas");
  await use(page);
  await page.close();
  assert.deepEqual(complaints, []);
}

const rowsOf = (page, section) => page.locator(`#${section} tbody tr`).allInnerTexts();
const details = (page) => page.locator(".details").innerText();

test("says first what was lost", () => onPage("content", faulty, async (page) => {
  assert.match(await page.locator(".statement").innerText(),
    /^3 of 21 pings failed, 1 got no answer\.\s+3 more pings were never sent: 1 ad did not/);
  const tiles = await page.locator(".tiles").innerText();
  for (const figure of ["17 of 21", "3 of 4", "75 %", "0.90 s"]) assert.ok(tiles.includes(figure), tiles);
  assert.match((await rowsOf(page, "losses")).join("\n"), /HTTP 503\s+3\s+00:18/);
  assert.equal((await rowsOf(page, "pings")).length, 21);
  assert.match((await rowsOf(page, "ads"))[3], /Spot 4\s+cut off\s+25 %.*\s3\s+The viewer left it/);
  assert.match((await rowsOf(page, "findings")).join("\n"), /\$\.ads\["ad-1"\]\.vast/);
}));

test("is worked by keyboard and pointer", () => onPage("keys", faulty, async (page) => {
  await page.getByRole("button", { name: "Show all" }).focus();
  await page.keyboard.press("Tab");
  const help = page.getByRole("application", { name: "Time line of the session" });
  assert.ok(await help.evaluate((chart) => chart === document.activeElement));
  for (let row = 0; row < 9; ++row) await page.keyboard.press("ArrowDown");
  await page.keyboard.press("Home");
  await page.keyboard.press("ArrowRight");
  const second = await details(page);
  for (const text of ["Ping midpoint, failed", "Spot 2", "HTTP 503", "77 ms",
    "https://tracking.example/ad-2/midpoint/1"]) assert.ok(second.includes(text), second);
  await page.keyboard.press("+");
  await page.keyboard.press("ArrowRight");
  assert.match(await details(page), /ad-3\/midpoint/);

  await page.keyboard.press("0");
  const ring = await page.locator(".cursor").boundingBox();
  await page.keyboard.press("ArrowLeft");
  await page.mouse.move(ring.x + ring.width / 2, ring.y + ring.height / 2, { steps: 3 });
  await page.locator(".tooltip").getByText("ad-3/midpoint").waitFor();
  assert.match(await details(page), /ad-3\/midpoint/);

  await page.getByRole("button", { name: "Show in the table" }).click();
  assert.match(await page.locator("#pings .revealed").innerText(), /ad-3\/midpoint/);
  await page.locator("#pings .revealed button").click();
  assert.match(await details(page), /ad-3\/midpoint/);
}));

test("finds pings", () => onPage("filter", faulty, async (page) => {
  await page.getByLabel("accepted").uncheck();
  assert.equal((await rowsOf(page, "pings")).length, 4);
  await page.getByRole("searchbox").fill("SPOT 2");
  assert.match((await rowsOf(page, "pings")).join(), /^[^,]*failed[^,]*ad-2\/midpoint\/1$/);
  await page.getByRole("searchbox").fill("nowhere");
  assert.deepEqual(await rowsOf(page, "pings"), ["No ping is like that."]);
  await page.getByRole("searchbox").fill("");
  const latency = page.locator("#pings").getByRole("button", { name: "Latency" });
  await latency.click();
  await latency.click();
  assert.match((await rowsOf(page, "pings"))[0], /unanswered/);
}));

const longSession = trace({ breaks: manyBreaks(100, 4, 70, 15), until: 7100, pingsOfEvent: 2 });
test("stays usable with thousands of pings", () => onPage("long", longSession, async (page) => {
  assert.equal((await rowsOf(page, "pings")).length, 100);
  assert.match(await page.locator("#pings .pages").innerText(), /^1–100 of 4,800/);
  await page.locator("#pings").getByRole("button", { name: "Next" }).click();
  assert.match(await page.locator("#pings .pages").innerText(), /^101–200 of 4,800/);
  await page.getByRole("application").focus();
  for (let row = 0; row < 8; ++row) await page.keyboard.press("ArrowDown");
  await page.keyboard.press("End");
  for (let step = 0; step < 8; ++step) await page.keyboard.press("+");
  const ring = await page.locator(".cursor").boundingBox();
  await page.mouse.move(ring.x + ring.width / 2, ring.y + ring.height / 2, { steps: 3 });
  await page.locator(".tooltip").getByText("ad-400/").waitFor();
}));

const hostile = "</script><img src=x onerror=alert(1)><script>alert(2)</script>";
test("runs nothing that a trace says", () => onPage("hostile", trace({
  breaks: [{ key: hostile, start: 5, ads: [{ key: `a${hostile}`, title: hostile, duration: 12 }] }],
  until: 20, host: `x.example/"${hostile}`, answer: () => ({ error: { description: hostile } }),
}), async (page) => {
  await page.getByRole("application").focus();
  for (let row = 0; row < 6; ++row) await page.keyboard.press("ArrowDown");
  assert.ok((await details(page)).includes(hostile));
  const ring = await page.locator(".cursor").boundingBox();
  await page.mouse.move(ring.x + ring.width / 2, ring.y + ring.height / 2, { steps: 3 });
  await page.locator(".tooltip").getByText("onerror").first().waitFor();
  assert.equal(await page.locator("img, svg, iframe, body script:not(#data):not(:last-of-type)").count(), 0);
}));

/** The lowest contrast (WCAG) of any text in the page with what lies behind it. */
function lowestContrast() {
  const channels = (text) => text.match(/[\d.]+/g).map(Number);
  const luminance = (color) => {
    const [r, g, b] = channels(color).map((value) =>
      value / 255 <= 0.04045 ? value / 255 / 12.92 : ((value / 255 + 0.055) / 1.055) ** 2.4);
    return 0.2126 * r + 0.7152 * g + 0.0722 * b;
  };
  const behind = (node) => {
    const color = getComputedStyle(node).backgroundColor;
    return channels(color)[3] === 0 ? behind(node.parentElement) : color;
  };
  const texts = [...document.body.querySelectorAll("*")].filter((node) =>
    !node.matches("script, :disabled") && [...node.childNodes].some((child) => child.nodeType === 3));
  return Math.min(...texts.map((node) => {
    const [a, b] = [luminance(getComputedStyle(node).color), luminance(behind(node))];
    return (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
  }));
}

for (const colorScheme of ["light", "dark"]) {
  for (const width of [1280, 390]) {
    const options = { colorScheme, viewport: { width, height: 900 } };
    test(`is legible: ${colorScheme}, ${width} pixels`, () => onPage("legible", faulty, async (page) => {
      const theme = () => page.locator("html").getAttribute("data-theme");
      assert.equal(await theme(), colorScheme);
      assert.ok((await page.evaluate(lowestContrast)) >= 4.5);
      assert.ok((await page.evaluate(() => document.documentElement.scrollWidth)) <= width);
      await page.getByRole("button", { name: /colours$/ }).click();
      assert.notEqual(await theme(), colorScheme);
      assert.ok((await page.evaluate(lowestContrast)) >= 4.5);
    }, options));
  }
}
