# A page in one folder links into a sibling folder that moves deeper.
document a/page.htm
move b/x.htm c/d/x.htm
move b/y.gif c/y.gif
inverse
----
<html><body>
<a href="../b/x.htm">x</a> <img src="../b/y.gif"> <a href="../b/other.htm">stays</a>
</body></html>
