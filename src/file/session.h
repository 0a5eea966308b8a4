// The open datalogger file: its decoded header and the input stream.
#pragma once

#include "file/field.h"

namespace ugf {

struct DlSession {
    int is_open = 0;
    DlStream stream{};
};

// Opens and decodes the datalogger file. 1 on success, 0 on failure (read
// errors have printed their own line).
int open_datalogger_session(DlSession& session, const char* path);

}  // namespace ugf
