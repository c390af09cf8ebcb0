# Contents entries of a deleted topic: an entry with children keeps them
# and its name; one without children goes with its LI.
document toc.hhc
delete a.htm
delete c.htm
call delete-hhc
----
<UL>
	<LI> <OBJECT type="text/sitemap">
		<param name="Name" value="A">
		<param name="Local" value="a.htm">
		</OBJECT>
	<UL>
		<LI> <OBJECT type="text/sitemap">
			<param name="Name" value="B">
			<param name="Local" value="b.htm">
			</OBJECT>
		<LI> <OBJECT type="text/sitemap">
			<param name="Name" value="C">
			<param name="Local" value="c.htm">
			</OBJECT>
	</UL>
</UL>
