#!/usr/bin/env python3
"""Compares the formatting view of `telvanix style --json` with what a real
browser computes (computed_style.js) on the same pages.

The two element sequences are aligned by tag (the browser's tree has implied
elements and repairs of its own); elements left unaligned are counted apart.
For every aligned element and property both values are normalised (px within
0.01, rgb/rgba/transparent, first font family, weights as numbers, keyword
spellings) and compared. Prints agreement per property and the disagreement
classes with examples; exits 1 when the agreement is below --min, when more
than --max-unaligned of either side's elements are unaligned, or when a page
fails in the browser or the tool.

  compare_styles.py --tool TELVANIX [--browser-json FILE] [--save-browser FILE]
                    [--list FILE] [--sample N] [--min PERCENT] [--classes N]
                    [--json OUT] PAGE|DIR...

A folder stands for every ".htm"/".html" page under it; --sample N keeps N
pages spread evenly over the sorted list.
"""

import argparse
import collections
import difflib
import json
import math
import os
import re
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))

# Browser property -> the names the tool may print it under.
PROPERTIES = {
    'color': ['color'],
    'background-color': ['background-color'],
    'font-family': ['font-family'],
    'font-size': ['font-size'],
    'font-weight': ['font-weight'],
    'font-style': ['font-style'],
    'text-decoration-line': ['text-decoration-line', 'text-decoration'],
    'text-align': ['text-align'],
    'vertical-align': ['vertical-align'],
}
for _box in ('margin-{}', 'padding-{}', 'border-{}-width', 'border-{}-style', 'border-{}-color'):
    for _side in ('top', 'right', 'bottom', 'left'):
        _name = _box.format(_side)
        PROPERTIES[_name] = [_name]
PROPERTIES['list-style-type'] = ['list-style-type']
PROPERTIES['white-space'] = ['white-space']

NAMED_COLORS = {
    'black': (0, 0, 0), 'white': (255, 255, 255), 'red': (255, 0, 0), 'green': (0, 128, 0),
    'blue': (0, 0, 255), 'yellow': (255, 255, 0), 'gray': (128, 128, 128), 'grey': (128, 128, 128),
    'silver': (192, 192, 192), 'maroon': (128, 0, 0), 'navy': (0, 0, 128), 'purple': (128, 0, 128),
    'teal': (0, 128, 128), 'olive': (128, 128, 0), 'lime': (0, 255, 0), 'aqua': (0, 255, 255),
    'fuchsia': (255, 0, 255),
}
BORDER_WIDTHS = {'thin': 1.0, 'medium': 3.0, 'thick': 5.0}
WEIGHTS = {'normal': 400, 'bold': 700, 'lighter': 100, 'bolder': 900}
TEXT_ALIGN = {'start': 'left', 'end': 'right', '-webkit-left': 'left', '-webkit-right': 'right',
              '-webkit-center': 'center', '-internal-center': 'center', 'middle': 'center'}
DECORATIONS = ('underline', 'overline', 'line-through', 'blink')
# Elements a browser's parser inserts where the markup leaves them implied;
# the page's own tree need not hold them, so they do not count as unaligned.
IMPLIED = {'TBODY', 'HTML', 'HEAD', 'BODY'}
# Elements no reader sees; their values are inherited and agree trivially, so
# the agreement is also given without them.
UNSEEN = {'HTML', 'HEAD', 'TITLE', 'META', 'LINK', 'STYLE', 'SCRIPT', 'BASE', 'NOSCRIPT'}
LENGTH = re.compile(r'^([+-]?(?:\d+\.?\d*|\.\d+)(?:e[+-]?\d+)?)(px)?$')
RGB = re.compile(r'^rgba?\(\s*([\d.]+)[,\s]+([\d.]+)[,\s]+([\d.]+)(?:[,\s/]+([\d.]+%?))?\s*\)$')


def normalise(prop, value):
    """A comparable form of a computed value: a float for px lengths, a
    tuple for colours, a string otherwise; None when there is no value."""
    if value is None:
        return None
    v = str(value).strip().lower()
    if prop.endswith('color'):
        if v in ('transparent', ''):
            return 'transparent'
        m = RGB.match(v)
        if m:
            alpha = m.group(4)
            if alpha is not None:
                a = float(alpha[:-1]) / 100 if alpha.endswith('%') else float(alpha)
                if a == 0:
                    return 'transparent'
                if a < 1:
                    return (round(float(m.group(1))), round(float(m.group(2))), round(float(m.group(3))), round(a, 2))
            return (round(float(m.group(1))), round(float(m.group(2))), round(float(m.group(3))))
        if re.match(r'^#[0-9a-f]{6}$', v):
            return (int(v[1:3], 16), int(v[3:5], 16), int(v[5:7], 16))
        if re.match(r'^#[0-9a-f]{3}$', v):
            return tuple(int(c * 2, 16) for c in v[1:])
        return NAMED_COLORS.get(v, v)
    if prop == 'font-family':
        first = v.split(',')[0].strip().strip('"\'').strip()
        return first
    if prop == 'font-weight':
        if v in WEIGHTS:
            return WEIGHTS[v]
        try:
            return int(float(v))
        except ValueError:
            return v
    if prop == 'text-decoration-line':
        words = sorted(w for w in re.split(r'[\s,]+', v) if w in DECORATIONS)
        return ' '.join(words) if words else 'none'
    if prop == 'text-align':
        return TEXT_ALIGN.get(v, v)
    if prop == 'vertical-align' and v == '-webkit-baseline-middle':
        return 'middle'
    if prop.endswith('-width') and v in BORDER_WIDTHS:
        return BORDER_WIDTHS[v]
    m = LENGTH.match(v)
    if m and (m.group(2) or float(m.group(1)) == 0):
        return float(m.group(1))
    return v


def same(a, b):
    if isinstance(a, float) and isinstance(b, float):
        return math.isclose(a, b, abs_tol=0.01)
    return a == b


def shown(value):
    if isinstance(value, tuple):
        return 'rgb%s' % (value,) if len(value) == 3 else 'rgba%s' % (value,)
    if isinstance(value, float):
        return ('%.4f' % value).rstrip('0').rstrip('.') + 'px'
    return str(value)


def expand(names):
    pages = []
    for name in names:
        if os.path.isdir(name):
            for root, dirs, files in os.walk(name):
                dirs.sort()
                pages += sorted(os.path.join(root, f) for f in files if f.lower().endswith(('.htm', '.html')))
        else:
            pages.append(name)
    return pages


def run_browser(pages, save):
    # The page list goes through a file: a corpus run names thousands of pages.
    with tempfile.NamedTemporaryFile('w', suffix='.txt', delete=False) as f:
        f.write('\n'.join(pages) + '\n')
        listing = f.name
    try:
        proc = subprocess.run(['node', os.path.join(HERE, 'computed_style.js'), '--jobs', '2', '--list', listing],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    finally:
        os.unlink(listing)
    if proc.returncode != 0:
        last = proc.stderr.strip().splitlines()
        sys.exit('compare_styles: the browser run failed' + (': ' + last[-1] if last else ''))
    if save:
        with open(save, 'w') as f:
            f.write(proc.stdout)
    return [json.loads(line) for line in proc.stdout.splitlines() if line.strip()]


def run_tool(tool, page):
    try:
        proc = subprocess.run([tool, 'style', page, '--json'], stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, timeout=120)
    except subprocess.TimeoutExpired:
        return None, 'timed out'
    # Status 1 with a whole view on stdout is a page whose problems (a sheet
    # that cannot be read) were reported; anything else without one failed.
    message = proc.stderr.decode('utf-8', 'replace').strip() or 'exit %d' % proc.returncode
    if proc.returncode not in (0, 1):
        return None, message
    try:
        return json.loads(proc.stdout.decode('utf-8', 'replace')), None
    except ValueError as e:
        return None, message if proc.returncode else 'unreadable JSON: %s' % e


def tool_value(computed, prop):
    for name in PROPERTIES[prop]:
        if name in computed:
            return computed[name]
    return None


class Tally:
    def __init__(self):
        self.agree = collections.Counter()
        self.seen = collections.Counter()  # pairs and agreeing pairs on elements a reader sees
        self.total = collections.Counter()
        self.classes = collections.Counter()
        self.examples = {}
        self.unaligned = {'browser': collections.Counter(), 'tool': collections.Counter()}
        self.unaligned_examples = {}
        self.pages = 0
        self.elements = 0
        self.failed = []

    def compare_page(self, file, browser_elements, tool_elements):
        self.pages += 1
        a = [e['tag'].upper() for e in browser_elements]
        b = [str(e.get('tag', '')).upper() for e in tool_elements]
        matcher = difflib.SequenceMatcher(None, a, b, autojunk=False)
        for op, i1, i2, j1, j2 in matcher.get_opcodes():
            if op == 'equal':
                for i, j in zip(range(i1, i2), range(j1, j2)):
                    self.compare_element(file, browser_elements[i], tool_elements[j])
                continue
            for i in range(i1, i2):
                self.unaligned['browser'][a[i]] += 1
                self.unaligned_examples.setdefault(('browser', a[i]), file)
            for j in range(j1, j2):
                self.unaligned['tool'][b[j]] += 1
                self.unaligned_examples.setdefault(('tool', b[j]), '%s:%s' % (file, tool_elements[j].get('line', '?')))

    def compare_element(self, file, browser, tool):
        self.elements += 1
        computed = tool.get('computed') or {}
        for prop in PROPERTIES:
            want = normalise(prop, browser['computed'].get(prop))
            got = normalise(prop, tool_value(computed, prop))
            self.total[prop] += 1
            visible = browser['tag'].upper() not in UNSEEN
            self.seen['pairs'] += visible
            if same(want, got):
                self.agree[prop] += 1
                self.seen['agree'] += visible
                continue
            key = (prop, browser['tag'].upper(), shown(want), 'missing' if got is None else shown(got))
            self.classes[key] += 1
            if key not in self.examples:
                origin = (tool.get('origin') or {})
                self.examples[key] = '%s:%s origin=%s' % (
                    file, tool.get('line', '?'),
                    next((origin[n] for n in PROPERTIES[prop] if n in origin), '-'))

    def report(self, out, classes, minimum):
        agree, total = sum(self.agree.values()), sum(self.total.values())
        share = 100.0 * agree / total if total else 0.0
        out.write('pages compared: %d, failed: %d; elements aligned: %d; unaligned: browser %d, tool %d\n' % (
            self.pages, len(self.failed), self.elements,
            sum(self.unaligned['browser'].values()), sum(self.unaligned['tool'].values())))
        out.write('agreement: %d of %d element x property pairs = %.3f%% (goal %.1f%%)\n' % (
            agree, total, share, minimum))
        out.write('without HTML, HEAD and the elements inside HEAD: %d of %d = %.3f%%\n\n' % (
            self.seen['agree'], self.seen['pairs'],
            100.0 * self.seen['agree'] / self.seen['pairs'] if self.seen['pairs'] else 0.0))
        out.write('| property | agree | pairs | % |\n|---|---|---|---|\n')
        for prop in PROPERTIES:
            t = self.total[prop]
            out.write('| %s | %d | %d | %.2f |\n' % (prop, self.agree[prop], t, 100.0 * self.agree[prop] / t if t else 0))
        # Coarse classes first (property and tag), then the exact values.
        coarse = collections.Counter()
        for (prop, tag, _, _), n in self.classes.items():
            coarse[(prop, tag)] += n
        out.write('\ndisagreements by property and tag (top %d):\n\n| count | property | tag |\n|---|---|---|\n' % classes)
        for (prop, tag), n in coarse.most_common(classes):
            out.write('| %d | %s | %s |\n' % (n, prop, tag))
        out.write('\ndisagreement classes (top %d):\n\n| count | property | tag | browser | tool | example |\n'
                  '|---|---|---|---|---|---|\n' % classes)
        for key, n in self.classes.most_common(classes):
            out.write('| %d | %s | %s | %s | %s | %s |\n' % ((n,) + key + (self.examples[key],)))
        for side in ('browser', 'tool'):
            if self.unaligned[side]:
                out.write('\nunaligned, only in the %s: ' % side + ', '.join(
                    '%s %d (%s)' % (tag, n, self.unaligned_examples[(side, tag)])
                    for tag, n in self.unaligned[side].most_common(12)) + '\n')
        for file, why in self.failed[:10]:
            out.write('failed: %s: %s\n' % (file, why))
        return share

    def as_json(self):
        return {
            'pages': self.pages, 'failed': self.failed, 'elements': self.elements,
            'agree': dict(self.agree), 'total': dict(self.total),
            'classes': [{'count': n, 'property': k[0], 'tag': k[1], 'browser': k[2], 'tool': k[3],
                         'example': self.examples[k]} for k, n in self.classes.most_common()],
            'unaligned': {side: dict(c) for side, c in self.unaligned.items()},
        }


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument('pages', nargs='*')
    ap.add_argument('--tool', required=True, help='the telvanix program')
    ap.add_argument('--list', help='a file naming one page a line')
    ap.add_argument('--sample', type=int, help='compare N pages spread over the list')
    ap.add_argument('--browser-json', help='reuse a recorded browser run instead of starting the browser')
    ap.add_argument('--save-browser', help='keep the browser run in this file')
    ap.add_argument('--min', type=float, default=99.0, help='agreement goal in percent (default 99)')
    ap.add_argument('--max-unaligned', type=float, default=1.0,
                    help='most elements of either side left unaligned, in percent (default 1)')
    ap.add_argument('--classes', type=int, default=40, help='how many classes to list')
    ap.add_argument('--json', help='write the tallies as JSON here')
    args = ap.parse_args()

    pages = list(args.pages)
    if args.list:
        with open(args.list) as f:
            pages += [line.strip() for line in f if line.strip()]
    pages = expand(pages)
    if args.sample and len(pages) > args.sample:
        step = len(pages) / args.sample
        pages = [pages[int(i * step)] for i in range(args.sample)]
    if args.browser_json:
        with open(args.browser_json) as f:
            recorded = [json.loads(line) for line in f if line.strip()]
        if not pages:
            pages = [r['file'] for r in recorded]
        by_file = {r['file']: r for r in recorded}
        browser = [by_file.get(p, {'file': p, 'error': 'not in the recorded run'}) for p in pages]
    else:
        if not pages:
            ap.error('no page given')
        browser = run_browser(pages, args.save_browser)

    tally = Tally()
    for record in browser:
        file = record['file']
        if 'error' in record:
            tally.failed.append((file, 'browser: ' + record['error']))
            continue
        view, why = run_tool(args.tool, file)
        if view is None:
            tally.failed.append((file, 'tool: ' + why.splitlines()[0]))
            continue
        tally.compare_page(file, record['elements'], view.get('elements') or [])

    share = tally.report(sys.stdout, args.classes, args.min)
    if args.json:
        with open(args.json, 'w') as f:
            json.dump(tally.as_json(), f, indent=1)
    # Agreement over a few aligned elements would mean little.
    unaligned = max(sum(n for tag, n in c.items() if side == 'tool' or tag not in IMPLIED)
                    for side, c in tally.unaligned.items())
    if unaligned > args.max_unaligned / 100.0 * (tally.elements + unaligned):
        sys.stdout.write('too many unaligned elements: %d\n' % unaligned)
        sys.exit(1)
    if tally.failed or share < args.min:
        sys.exit(1)


if __name__ == '__main__':
    main()
