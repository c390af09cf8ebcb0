# Remote, mail, script, same-page and compiled-file references, and files
# that did not move, are left alone.
document page.htm sub/page.htm
move x.htm y.htm
----
<a href="http://example.com/x.htm">1</a><a href="mailto:me@example.com">2</a>
<a href="javascript:go('x.htm')">3</a><a href="#x">4</a><a href="help.chm::/x.htm">5</a>
<a href="/abs/x.htm">6</a><a href="C:\x.htm">7</a>
