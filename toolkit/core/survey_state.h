// What an open survey holds inside: the library's session. Only the
// toolkit's own code sees it; programs see the opaque Survey.
#pragma once

#include "file/session.h"
#include "ugf/survey.hpp"

namespace ugf::kit {

struct SurveyState {
    DlSession session;
};

inline DlSession& session_of(Survey& survey) { return survey.state->session; }
inline const DlSession& session_of(const Survey& survey) { return survey.state->session; }

}  // namespace ugf::kit
