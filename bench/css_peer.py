#!/usr/bin/python3
"""Times a reference CSS parser (tinycss2, from the Debian package
python3-tinycss2) on the same stylesheet bytes as bench/css_bench.cpp, so the
two MB/s figures can be set side by side. Corpus: every .css file under
$TELVANIX_CSS_CORPUS, else the test samples; one parse per file."""
import os
import sys
import time

try:
    import tinycss2
except ImportError:
    sys.exit("python3-tinycss2 is not installed (apt-get install python3-tinycss2)")


def corpus_files():
    root = os.environ.get("TELVANIX_CSS_CORPUS") or os.path.join(
        os.path.dirname(os.path.abspath(__file__)), "..", "tests", "data", "css")
    files = []
    for folder, _, names in os.walk(root):
        files += [os.path.join(folder, n) for n in names if n.endswith(".css")]
    return sorted(files)


def main():
    sheets = []
    for path in corpus_files():
        with open(path, "rb") as f:
            data = f.read()
        if data:
            sheets.append(data)
    total = sum(len(s) for s in sheets)
    if not total:
        sys.exit("no stylesheet found")
    texts = [s.decode("latin-1") for s in sheets]  # byte-for-byte, as the library reads them
    best = None
    rules = 0
    for _ in range(5):
        start = time.perf_counter()
        rules = 0
        for text in texts:
            rules += len(tinycss2.parse_stylesheet(text, skip_comments=True, skip_whitespace=True))
        elapsed = time.perf_counter() - start
        best = elapsed if best is None else min(best, elapsed)
    print(f"tinycss2 {tinycss2.__version__}: {len(sheets)} files, {total / 1e6:.2f} MB, "
          f"best of 5 {best * 1000:.1f} ms, {total / best / 1e6:.2f} MB/s, {rules / best:,.0f} rules/s")


if __name__ == "__main__":
    main()
