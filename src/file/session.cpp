#include "file/session.h"

namespace ugf {

int open_datalogger_session(DlSession& session, const char* path) {
    (void)path;
    session = DlSession{};
    return 0;  // decoding of the header comes with the session reader
}

}  // namespace ugf
