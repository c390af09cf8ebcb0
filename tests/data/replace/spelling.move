# While neither the reference nor the page moves, the reference keeps its own
# spelling; once the page moves, it is written the short way.
document a/page.htm a/b/page.htm
move zz.htm a/zz2.htm
----
<a href="./b.htm">1</a><a href="../a/c.htm">2</a><a href="d.htm">3</a>
