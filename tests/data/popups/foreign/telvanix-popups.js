// The author's own script of that name.
