document help/frames.htm
folder help/topics help/pages
inverse
----
<frameset cols="20%,*"><frame src="topics/toc.htm"><frame src="topics/main.htm" name="main"></frameset>
