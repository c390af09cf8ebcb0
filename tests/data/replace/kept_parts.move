# Fragments, queries, backslashes, %-encoding and character references are
# written back as they were; the quotes of each attribute too.
document page.htm
folder docs manual
inverse
----
<a href="docs/x.htm#top">1</a>
<a href='docs/x.htm?lang=en#s2'>2</a>
<a href=docs\sub\x.htm>3</a>
<a href="docs/my%20file.htm">4</a>
<a href="docs/a&amp;b.htm">5</a>
<a href="  docs/x.htm  ">6</a>
