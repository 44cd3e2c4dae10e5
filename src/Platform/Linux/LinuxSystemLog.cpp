#include "Platform/Linux/LinuxSystemLog.h"

#include <syslog.h>

namespace kiv {

void LinuxSystemLog::write(const std::string &line) { ::syslog(LOG_USER | LOG_WARNING, "%s", line.c_str()); }

}  // namespace kiv
