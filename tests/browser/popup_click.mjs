// Popups made by the tool, opened in Debian's chromium: a click shows the
// target topic's text (or the literal text) in a box at the link, Escape and
// a click outside close it, the keyboard opens it, and a page opened from
// disk shows the topic in a frame. Writes popup.png of the open box.
//
// node popup_click.mjs --tool TELVANIX --site DIR --out DIR --chromium PATH
import { execFileSync } from "node:child_process";
import fs from "node:fs";
import http from "node:http";
import os from "node:os";
import path from "node:path";
import puppeteer from "puppeteer-core";

const arg = (name) => {
  const i = process.argv.indexOf(`--${name}`);
  if (i < 0 || i + 1 >= process.argv.length) throw new Error(`--${name} is missing`);
  return process.argv[i + 1];
};
const tool = arg("tool"), site = arg("site"), out = arg("out"), chromium = arg("chromium");

let failures = 0;
const check = (ok, what, detail = "") => {
  console.log(`${ok ? "ok  " : "FAIL"} ${what}${ok || !detail ? "" : `: ${detail}`}`);
  if (!ok) failures++;
};
const words = (s) => s.replace(/\s+/g, " ").trim();

// The project, with popups made by the tool.
const work = fs.mkdtempSync(path.join(os.tmpdir(), "telvanix-popup-"));
fs.cpSync(site, work, { recursive: true });
const page = path.join(work, "serial.htm");
const run = (...args) => execFileSync(tool, ["popups", page, ...args], { encoding: "utf8" });
run("--make", "baud rate", "--topic", "baud.htm");
run("--make", "parity", "--topic", "glossary.htm#parity");
run("--make", "terminal", "--text", "The device at the other end of the line (≈ a screen and a keyboard).");
// A page with popup objects, given the support links by a popup of its own.
fs.copyFileSync(path.join(site, "..", "project", "kinds.htm"), path.join(work, "kinds.htm"));
execFileSync(tool, ["popups", path.join(work, "kinds.htm"), "--make", "Not popups", "--text", "These are not."]);
const listed = JSON.parse(run("--json")).popups;
check(listed.length === 3, "the tool lists the three popups it made", JSON.stringify(listed));

const types = { ".htm": "text/html; charset=windows-1252", ".js": "text/javascript", ".css": "text/css" };
const server = http.createServer((req, res) => {
  const file = path.join(work, decodeURIComponent(new URL(req.url, "http://x").pathname));
  if (!file.startsWith(work) || !fs.existsSync(file)) {
    res.writeHead(404).end();
    return;
  }
  res.writeHead(200, { "Content-Type": types[path.extname(file)] || "application/octet-stream" });
  res.end(fs.readFileSync(file));
});
await new Promise((resolve) => server.listen(0, "127.0.0.1", resolve));
const base = `http://127.0.0.1:${server.address().port}/`;

const profile = fs.mkdtempSync(path.join(os.tmpdir(), "telvanix-chromium-"));
const browser = await puppeteer.launch({
  executablePath: chromium,
  headless: true,
  userDataDir: profile,
  args: ["--headless=new", "--no-sandbox", "--disable-gpu", "--no-first-run", "--disable-background-networking",
         "--disable-component-update", "--disable-sync"],
});
try {
  const tab = await browser.newPage();
  await tab.setViewport({ width: 640, height: 360 });
  // What a reader sees of a topic, or of one element of it.
  const visible = async (url, id) => {
    const other = await browser.newPage();
    await other.goto(base + url);
    const text = await other.$eval(id ? `#${id}` : "body", (el) => el.innerText);
    await other.close();
    return words(text);
  };
  const boxText = () => tab.$eval(".telvanix-popup-box", (el) => el.innerText);
  const boxGone = async () => (await tab.$(".telvanix-popup-box")) === null;
  const link = (text) => `xpath/.//a[contains(@class, "telvanix-popup") and normalize-space(.) = "${text}"]`;

  await tab.goto(base + "serial.htm");
  await tab.waitForFunction(() => typeof window.telvanixPopup === "function");
  const aria = await tab.$eval("a.telvanix-popup", (a) => [a.getAttribute("aria-haspopup"), a.getAttribute("aria-expanded")]);
  check(aria[0] === "dialog" && aria[1] === "false", "a popup link says it opens a dialog, closed", aria.join(","));

  // A whole topic.
  await (await tab.waitForSelector(link("baud rate"))).click();
  await tab.waitForFunction(() => {
    const box = document.querySelector(".telvanix-popup-box");
    return box && box.innerText.trim() !== "\u2026";
  });
  const expected = await visible("baud.htm");
  check(words(await boxText()) === expected, "the box shows the topic's visible text", await boxText());
  const placed = await tab.evaluate(() => {
    const a = document.querySelector("a.telvanix-popup").getBoundingClientRect();
    const b = document.querySelector(".telvanix-popup-box").getBoundingClientRect();
    return b.top >= a.bottom && b.top - a.bottom < 20;
  });
  check(placed, "the box opens just below the link");
  const state = await tab.$eval("a.telvanix-popup", (a) => [a.getAttribute("aria-expanded"), a.getAttribute("aria-controls"),
    document.getElementById(a.getAttribute("aria-controls"))?.getAttribute("role")]);
  check(state[0] === "true" && state[2] === "dialog", "the open link is expanded and controls a dialog", state.join(","));
  fs.mkdirSync(out, { recursive: true });
  await tab.screenshot({ path: path.join(out, "popup.png") });
  await tab.keyboard.press("Escape");
  check(await boxGone(), "Escape closes the box");
  const focused = await tab.evaluate(() => document.activeElement.textContent);
  check(focused === "baud rate", "focus goes back to the link", focused);

  // Reached by Tab and opened by Enter; a bookmark shows that element.
  await tab.keyboard.press("Tab");
  const reached = await tab.evaluate(() => document.activeElement.textContent);
  check(reached === "parity", "Tab moves on to the next popup link", reached);
  await tab.keyboard.press("Enter");
  await tab.waitForFunction(() => document.querySelector(".telvanix-popup-box")?.innerText.trim().length > 1);
  check(words(await boxText()) === (await visible("glossary.htm", "parity")), "Enter opens the bookmarked part",
        await boxText());
  await tab.mouse.click(600, 340);
  check(await boxGone(), "a click outside closes the box");

  // A literal text.
  await (await tab.waitForSelector(link("terminal"))).click();
  const text = await tab.$eval(".telvanix-popup-box", (el) => [el.innerText, el.getAttribute("role")]);
  check(text[0] === "The device at the other end of the line (≈ a screen and a keyboard)." && text[1] === "tooltip",
        "a text popup shows its text as a tooltip", text.join(" | "));
  await tab.keyboard.press("Escape");

  // A popup object becomes a link that opens the same box.
  await tab.goto(base + "kinds.htm");
  await (await tab.waitForSelector(link("stop bit"))).click();
  const fromObject = await tab.$eval(".telvanix-popup-box", (el) => el.innerText);
  check(fromObject === "The idle time that ends a character & more.", "a popup object opens its text", fromObject);
  await tab.keyboard.press("Escape");

  // From disk the page may not read the topic; it is shown in a frame.
  await tab.goto("file://" + page);
  await tab.waitForFunction(() => typeof window.telvanixPopup === "function");
  await (await tab.waitForSelector(link("baud rate"))).click();
  const frame = await tab.waitForSelector(".telvanix-popup-box iframe");
  const src = await frame.evaluate((f) => f.src);
  check(src.endsWith("/baud.htm"), "a page opened from disk shows the topic in a frame", src);
} finally {
  await browser.close();
  server.close();
  fs.rmSync(work, { recursive: true, force: true });
  fs.rmSync(profile, { recursive: true, force: true });
}
console.log(failures ? `${failures} check(s) failed` : "all popup checks passed");
process.exit(failures ? 1 : 0);
