# A folder cannot move into itself; a source cannot be given twice.
document page.htm
folder a a/b
folder a c
folder A d
move x.htm x.htm
----
<a href="a/x.htm">x</a>
