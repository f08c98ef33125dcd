# quorix.pyhold is self-contained native code; the package itself is all it needs.
hiddenimports = ["quorix"]
