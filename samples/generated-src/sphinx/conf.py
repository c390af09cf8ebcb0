# A small Sphinx help project with non-ASCII text; built by
# scripts/build-help-projects.sh with `sphinx-build -b htmlhelp`.
project = "Café Crème"
author = "Zoë Ærø"
copyright = "2026, Zoë Ærø"
language = "en"
master_doc = "index"
htmlhelp_basename = "cafe"
html_theme = "alabaster"
# Debian packs the htmlhelp builder as an extension of its own.
extensions = ["sphinxcontrib.htmlhelp"]
