# The page moves from a/b/ up to the root; references climb less.
document a/b/page.htm page.htm
inverse
----
<html><body>
<a href="../../index.htm">home</a> <a href="../c.htm">c</a> <a href="d.htm">d</a>
<img src=../img/x.gif>
</body></html>
