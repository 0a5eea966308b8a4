// Every field of a survey as open data, in JSON: the header as stored, the
// notes and labels, the setups with their fields and decoded bit fields,
// each point's record with its decoded fields and the text of its cell, and
// the stored scans as arrays. The layout is the JSON Schema
// docs/survey.schema.json. The text is handed out in pieces as it is made,
// so a survey of any size needs little memory.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "ugf/survey.hpp"

namespace ugf::kit {

int write_survey_json(Survey& survey, const std::function<void(std::string_view)>& out, std::string& why);

}  // namespace ugf::kit
