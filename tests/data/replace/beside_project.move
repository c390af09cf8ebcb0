# A file beside the project (above the root) moves with nothing, but the
# page's references to it are re-based when the page moves, so they keep
# naming it; a folder written with its slash keeps the slash.
document page.htm sub/page.htm
inverse
----
<img src="../shared/logo.gif"><a href="../../x.htm">x</a><a href="docs/">folder</a>
