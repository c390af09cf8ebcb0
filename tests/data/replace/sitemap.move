# A contents file read as a page: Local, URL, ImageList and Merge values,
# decoded and written back as they were.
document toc.hhc
folder topics pages
move icons.bmp img/icons.bmp
move other.chm help/other.chm
call hhc
inverse
----
<HTML><BODY>
<OBJECT type="text/site properties"><param name="ImageList" value="icons.bmp"></OBJECT>
<UL>
	<LI> <OBJECT type="text/sitemap">
		<param name="Name" value="R&amp;D">
		<param name="Local" value="topics/r&amp;d.htm#x">
		</OBJECT>
	<LI> <OBJECT type="text/sitemap">
		<param name="Name" value="Web">
		<param name="URL" value="http://example.com/topics/a.htm">
		</OBJECT>
	<OBJECT type="text/sitemap"><param name="Merge" value="other.chm::/toc.hhc"></OBJECT>
</UL>
</BODY></HTML>
