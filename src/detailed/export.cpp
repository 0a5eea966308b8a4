#include "detailed/export.h"

namespace ugf {

int export_datalogger_file(DlSession& session, int output_form, CsvSink& sink) {
    (void)session;
    (void)output_form;
    (void)sink;
    return 0;  // no export yet
}

}  // namespace ugf
