// For programs that open menus: the library that finds fonts keeps one small pattern for ever, which a leak checker
// would find.
extern "C" [[gnu::used]] char const* __lsan_default_suppressions() { return "leak:libfontconfig"; }
