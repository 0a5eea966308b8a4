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

// A text of the file (an identifier, a note, a description) or a name as a
// JSON string may hold it: valid UTF-8 stays, any other byte is read as
// Latin-1, so that any stored text makes valid JSON. Every JSON text of the
// toolkit goes through it.
std::string json_text(std::string_view bytes);

}  // namespace ugf::kit
