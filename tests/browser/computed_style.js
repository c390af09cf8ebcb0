#!/usr/bin/env node
// Records what a real browser computes for every element of each page given:
// one JSON object a line, {"file", "elements": [{"tag", "computed"}]}, the
// elements in document order (HTML and HEAD included). One headless chromium
// serves every page, so a run over hundreds of pages takes minutes.
//
//   node computed_style.js [--jobs N] [--list FILE] PAGE...
//
// Page scripts are switched off and nothing outside file: URLs is fetched, so
// the recorded format is that of the page's own markup and stylesheets.
'use strict';

const fs = require('fs');
const os = require('os');
const path = require('path');
const { pathToFileURL } = require('url');
const puppeteer = require('puppeteer-core');

const PROPERTIES = [
  'color', 'background-color', 'font-family', 'font-size', 'font-weight',
  'font-style', 'text-decoration-line', 'text-align', 'vertical-align',
  'margin-top', 'margin-right', 'margin-bottom', 'margin-left',
  'padding-top', 'padding-right', 'padding-bottom', 'padding-left',
  'border-top-width', 'border-right-width', 'border-bottom-width', 'border-left-width',
  'border-top-style', 'border-right-style', 'border-bottom-style', 'border-left-style',
  'border-top-color', 'border-right-color', 'border-bottom-color', 'border-left-color',
  'list-style-type', 'white-space',
];

function usage(message) {
  process.stderr.write(`computed_style: ${message}\n` +
    'usage: computed_style.js [--jobs N] [--list FILE] PAGE...\n');
  process.exit(2);
}

function parseArgs(argv) {
  const pages = [];
  let jobs = 2;
  for (let i = 0; i < argv.length; ++i) {
    const a = argv[i];
    if (a === '--jobs' || a === '--list') {
      if (i + 1 >= argv.length) usage(`${a} needs a value`);
      const v = argv[++i];
      if (a === '--jobs') {
        jobs = Number.parseInt(v, 10);
        if (!(jobs >= 1 && jobs <= 16)) usage('--jobs takes 1 to 16');
      } else {
        let text;
        try { text = fs.readFileSync(v, 'utf8'); } catch (e) { usage(`cannot read ${v}`); }
        for (const line of text.split('\n')) if (line.trim()) pages.push(line.trim());
      }
    } else if (a.startsWith('--')) {
      usage(`unknown option ${a}`);
    } else {
      pages.push(a);
    }
  }
  if (pages.length === 0) usage('no page given');
  return { pages, jobs };
}

// Runs inside the page: every element in document order.
function collect(properties) {
  const out = [];
  for (const el of document.getElementsByTagName('*')) {
    const cs = getComputedStyle(el);
    const computed = {};
    for (const p of properties) computed[p] = cs.getPropertyValue(p);
    out.push({ tag: el.tagName.toUpperCase(), computed });
  }
  return out;
}

async function record(browser, file) {
  const page = await browser.newPage();
  try {
    await page.setJavaScriptEnabled(false);
    await page.setRequestInterception(true);
    page.on('request', (req) => {
      if (req.url().startsWith('file:') || req.url().startsWith('data:')) req.continue();
      else req.abort();
    });
    await page.goto(pathToFileURL(path.resolve(file)).href, { waitUntil: 'load', timeout: 20000 });
    return { file, elements: await page.evaluate(collect, PROPERTIES) };
  } catch (e) {
    return { file, error: String(e.message || e).split('\n')[0] };
  } finally {
    await page.close().catch(() => {});
  }
}

async function main() {
  const { pages, jobs } = parseArgs(process.argv.slice(2));
  const profile = fs.mkdtempSync(path.join(os.tmpdir(), 'telvanix-chromium-'));
  let browser;
  let failed = 0;
  try {
    browser = await puppeteer.launch({
      executablePath: process.env.TELVANIX_CHROMIUM || '/usr/bin/chromium',
      headless: true,
      args: ['--headless=new', '--no-sandbox', '--disable-gpu', '--no-first-run',
        '--disable-background-networking', '--disable-component-update', '--disable-sync',
        `--user-data-dir=${profile}`],
    });
    // Results keep the order of the pages given, whatever order they finish in.
    const results = new Array(pages.length);
    let next = 0;
    let written = 0;
    const flush = () => {
      while (written < pages.length && results[written] !== undefined) {
        if (results[written].error) ++failed;
        process.stdout.write(JSON.stringify(results[written]) + '\n');
        results[written++] = null;
      }
    };
    const worker = async () => {
      while (next < pages.length) {
        const i = next++;
        results[i] = await record(browser, pages[i]);
        flush();
      }
    };
    await Promise.all(Array.from({ length: Math.min(jobs, pages.length) }, worker));
  } catch (e) {
    process.stderr.write(`computed_style: ${String(e.message || e).split('\n')[0]}\n`);
    failed = -1;
  } finally {
    if (browser) await browser.close().catch(() => {});
    fs.rmSync(profile, { recursive: true, force: true });
  }
  if (failed < 0) process.exit(1);
  if (failed > 0) process.stderr.write(`computed_style: ${failed} page(s) could not be read\n`);
  process.exit(0);
}

main();
