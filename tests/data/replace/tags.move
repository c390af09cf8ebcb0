# Every kind of tag that names a file.
document page.htm
folder media assets
inverse
----
<html><head>
<link rel="stylesheet" href="media/a.css"><link rel="alternate stylesheet" href="media/b.css">
<link rel="next" href="media/next.htm"><script src="media/s.js"></script>
<bgsound src="media/s.wav"></head>
<body><table background="media/t.gif"><tr><td background="media/td.gif" bgcolor="white">x</td>
<th background="white">y</th></tr></table>
<img src="media/i.gif" lowsrc="media/l.gif" usemap="media/m.htm#map" srcset="media/i2.gif 2x, media/i3.gif 3x">
<map name="m"><area href="media/area.htm" shape="rect"></map>
<input type="image" src="media/go.gif"><input type="text" src="media/no.gif">
<embed src="media/e.mid"><iframe src="media/f.htm"></iframe>
<object data="media/o.swf"><param name="movie" value="media/o.swf"><param name="quality" value="high"></object>
</body></html>
