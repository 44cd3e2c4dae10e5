// What the font library keeps until the process ends is not ours to give back. Read by the leak sanitizer alone.
extern "C" const char *__lsan_default_suppressions();

extern "C" const char *__lsan_default_suppressions() { return "leak:libfontconfig\n"; }
