# Index entries: a keyword loses the topics deleted and goes when none is
# left.
document index.hhk
delete a.htm
call delete-hhk
----
<UL>
	<LI> <OBJECT type="text/sitemap">
		<param name="Name" value="alpha">
		<param name="Local" value="a.htm">
		</OBJECT>
	<LI> <OBJECT type="text/sitemap">
		<param name="Name" value="beta">
		<param name="Name" value="Topic A">
		<param name="Local" value="a.htm">
		<param name="Name" value="Topic B">
		<param name="Local" value="b.htm">
		</OBJECT>
</UL>
