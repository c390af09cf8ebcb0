# A reference is matched without regard to letter case; the new name is
# written as the move gives it, the rest as the page wrote it.
document Topics/page.htm
move images/logo.gif Pictures/Logo2.GIF
folder TOPICS/Sub Topics/Other
----
<img src="../IMAGES/LOGO.gif"><a href="SUB/Deep/x.htm">x</a><a href="sub/y.htm">y</a>
