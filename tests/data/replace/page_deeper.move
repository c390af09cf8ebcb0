# The page moves two folders deeper: its own relative references follow.
document page.htm sub/deep/page.htm
inverse
----
<html><head><link rel="stylesheet" href="css/site.css"></head>
<body background="img/bg.gif">
<a href="other.htm#top">other</a> <a href="page.htm#self">self</a> <a href="#here">here</a>
<img src="img/a.gif" alt="a"><a href="http://example.com/x.htm">remote</a>
</body></html>
