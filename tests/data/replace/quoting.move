# A new name with a blank: an unquoted attribute gets quotes, %-encoded
# references stay %-encoded.
document page.htm
move a.htm new\sname.htm
move b%.htm c.htm
----
<a href=a.htm>1</a><a href="a.htm">2</a><a href='a.htm'>3</a><a href="b%25.htm">4</a>
