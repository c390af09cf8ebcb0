# (see spelling.move) The page stays in its folder: nothing changes.
document a/page.htm a/renamed.htm
move zz.htm a/zz2.htm
----
<a href="./b.htm">1</a><a href="../a/c.htm">2</a><a href="d.htm">3</a>
