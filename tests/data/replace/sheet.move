# A stylesheet file: targets relative to the sheet's own folder.
document css/site.css css/v2/site.css
folder css/img images
call sheet
inverse
----
@import url("base.css") screen;
body { background: #fff url(img/bg.png) repeat-x; }
.logo { background-image: url('../logo.gif'); }
a { cursor: url(http://example.com/c.cur), auto; }
