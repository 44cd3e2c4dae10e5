// What the thread sanitizer must know in this program: Qt's libraries are not built with it, so that it does not see how they
// hand messages from thread to thread; and the buses that tests need are started while such a thread runs.
extern "C" const char *__tsan_default_suppressions() { return "race:libQt6DBus.so\nrace:libQt6Core.so\nrace:libdbus-1.so\n"; }
extern "C" const char *__tsan_default_options() { return "die_after_fork=0"; }
