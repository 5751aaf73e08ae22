// Nothing: the target whose precompiled headers the tests share needs a source of its own. Every
// test includes what it uses.
