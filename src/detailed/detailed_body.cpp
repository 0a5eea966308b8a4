#include "detailed/detailed_body.h"

namespace ugf {

// Not written yet: both report failure, and the output keeps what the head
// wrote.
int export_linear_file(DlSession& session, int output_form, CsvSink& sink) {
    (void)session;
    (void)output_form;
    (void)sink;
    return 0;
}

int export_detailed_body(DlSession& session, CsvSink& sink) {
    (void)session;
    (void)sink;
    return 0;
}

}  // namespace ugf
