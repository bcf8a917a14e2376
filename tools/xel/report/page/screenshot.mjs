// A picture of a report down to the end of its time line.
//
//   screenshot.mjs PAGE PICTURE [dark]
import { resolve } from "node:path";
import { chromium } from "playwright-core";

const [, , file, picture, scheme = "light"] = process.argv;
const browser = await chromium.launch({
  executablePath: "/usr/bin/chromium",
  args: ["--headless=new", "--no-sandbox"],
});
const width = 1280;
const page = await browser.newPage({ viewport: { width, height: 1000 }, colorScheme: scheme });
await page.goto(`file://${resolve(file)}`);
const chart = page.locator(".chart:has(canvas)");
const { y, height } = await chart.boundingBox();
await page.screenshot({
  path: picture,
  fullPage: true,
  clip: { x: 0, y: 0, width, height: y + height + 6 },
});
await browser.close();
