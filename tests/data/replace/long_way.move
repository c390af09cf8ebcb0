# A reference written the long way ("../db/x.htm" inside db/) keeps its
# shape when its folder moves, so that the inverse move gives it back; a
# reference written the short way stays short.
document fcl/db/page.htm fcl/database/page.htm
folder fcl/db fcl/database
inverse
----
<a href="../db/x.htm">x</a><a href="y.htm">y</a><a href="../../rtl/index.htm">up</a><a href="../db/">index</a>
