# url() without quotes, with quotes, in style attributes and STYLE blocks,
# and "@import" in both spellings.
document page.htm
folder img pics
move base.css css/base.css
inverse
----
<html><head><style type="text/css">
@import "base.css";
@import url(base.css);
body { background: url(img/bg.gif) no-repeat; }
/* url(img/comment.gif) */
p { content: "url(img/string.gif)"; list-style-image: url( 'img/dot.gif' ); }
</style></head>
<body><p style="background-image:url(img/p.gif)">p</p>
<div style="background: url(&quot;img/q.gif&quot;)">q</div></body></html>
