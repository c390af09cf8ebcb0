# Help-control objects: button images, splash images, related topics, and
# contents and index files; keyword items are no files.
document page.htm
folder topics pages
move img/b.bmp art/b.bmp
move toc.hhc nav/toc.hhc
inverse
----
<OBJECT id=hhctrl type="application/x-oleobject" classid="clsid:ADB880A6-D8FF-11CF-9377-00AA003B7A11">
<PARAM name="Command" value="Related Topics">
<PARAM name="Button" value="bitmap:img/b.bmp">
<PARAM name="Item1" value="First;topics/a.htm">
<PARAM name="Item2" value="R&amp;D;topics/r&amp;d.htm">
</OBJECT>
<OBJECT classid="clsid:ADB880A6-D8FF-11CF-9377-00AA003B7A11"><PARAM name="Command" value="Contents"><PARAM name="Item1" value="toc.hhc"></OBJECT>
<OBJECT classid="clsid:ADB880A6-D8FF-11CF-9377-00AA003B7A11"><PARAM name="Command" value="Splash"><PARAM name="Item1" value="img/b.bmp"></OBJECT>
<OBJECT classid="clsid:ADB880A6-D8FF-11CF-9377-00AA003B7A11"><PARAM name="Command" value="KLink"><PARAM name="Item1" value="topics"></OBJECT>
