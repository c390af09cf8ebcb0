# References to a deleted page: a link is unwrapped, an image goes, a
# related-topics item goes; other values are left.
document page.htm
delete gone.htm
delete gone.gif
----
<p>See <a href="gone.htm#x">the <b>old</b> page</a> and <a href="kept.htm">this</a>.
<img src="gone.gif"> <img src="kept.gif"></p>
<OBJECT classid="clsid:ADB880A6-D8FF-11CF-9377-00AA003B7A11"><PARAM name="Command" value="Related Topics"><PARAM name="Item1" value="Old;gone.htm"><PARAM name="Item2" value="Kept;kept.htm"></OBJECT>
<div style="background:url(gone.gif)">left</div>
