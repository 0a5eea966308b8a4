// The archive's interface: picks the implementation from the name given to
// open, checks what the caller gives, and makes the SHA-256, the orders and
// the texts that every implementation shares.
#include "ugf/archive.hpp"

#include <openssl/evp.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <set>
#include <tuple>

#include "archive/backend.h"
#include "ugf/files.hpp"
#include "ugf/history.hpp"

namespace ugf::kit {

namespace {

// The kinds of store, by the start of the name given to open; a name that
// starts with none of the prefixes is a file path.
struct Backend {
    const char* prefix;
    const ArchiveOps* ops;  // null: not built into this program
    ArchiveOpen open;
};
constexpr Backend BACKENDS[] = {
#ifdef UGF_ARCHIVE_POSTGRES
    {"postgresql://", &postgres_archive_ops, postgres_archive_open},
    {"postgres://", &postgres_archive_ops, postgres_archive_open},
#else
    {"postgresql://", nullptr, nullptr},
    {"postgres://", nullptr, nullptr},
#endif
    {"", &sqlite_archive_ops, sqlite_archive_open},
};

// The dates that print as YYYY-MM-DD: 0001-01-01 to 9999-12-31.
constexpr std::int32_t FIRST_DAY = -719162;
constexpr std::int32_t LAST_DAY = 2932896;

int not_open(const Archive& archive, std::string& why) {
    if (archive.ops) return 1;
    why = "the archive is not open";
    return 0;
}

std::string no_survey(std::int64_t id) { return "no survey " + std::to_string(id) + " in the archive"; }

}  // namespace


std::string sha256_hex(const std::string& bytes) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    if (EVP_Digest(bytes.data(), bytes.size(), digest, &size, EVP_sha256(), nullptr) != 1) return {};
    static constexpr char HEX[] = "0123456789abcdef";
    std::string text;
    for (unsigned int i = 0; i < size; ++i) {
        text += HEX[digest[i] >> 4];
        text += HEX[digest[i] & 15];
    }
    return text;
}

Archive::~Archive() { archive_close(*this); }

int archive_open(Archive& archive, const std::string& where, bool create, std::string& why) {
    archive_close(archive);
    for (const Backend& backend : BACKENDS) {
        if (where.compare(0, std::char_traits<char>::length(backend.prefix), backend.prefix) != 0) continue;
        if (!backend.ops) {
            why = "this program has no support for archives at " + std::string(backend.prefix) + " addresses";
            return 0;
        }
        ArchiveState* state = nullptr;
        std::string name;
        if (!backend.open(where, create, state, name, why)) return 0;
        archive.ops = backend.ops;
        archive.state = state;
        archive.where = where;
        archive.name = name;
        return 1;
    }
    return 0;  // the last entry takes every name
}

void archive_close(Archive& archive) {
    if (archive.ops) archive.ops->close(archive.state);
    archive.ops = nullptr;
    archive.state = nullptr;
}

int archive_add(Archive& archive, const NewSurvey& survey, std::int64_t& id, std::int64_t& existing,
                std::string& why) {
    id = 0;
    existing = 0;
    if (!not_open(archive, why)) return 0;
    if (survey.part.empty()) {
        why = "a survey needs the name of its part";
        return 0;
    }
    if (survey.date < FIRST_DAY || survey.date > LAST_DAY) {
        why = "the survey's date is out of range (years 1 to 9999)";
        return 0;
    }
    AddRequest request{survey, last_part(survey.file_name), sha256_hex(survey.bytes), 0};
    if (request.sha256.empty()) {
        why = "cannot compute the SHA-256 of the file";
        return 0;
    }
    request.readings = static_cast<std::uint64_t>(
        std::count_if(survey.points.begin(), survey.points.end(), [](const Point& p) { return !p.empty; }));
    StoredSurvey same;
    if (archive.ops->add(archive.state, request, id, same, why)) return 1;
    if (same.id > 0) {
        existing = same.id;
        why = "the same file is already stored as survey " + std::to_string(same.id) + " (" + same.part + ", " +
              date_text(same.date) + ", " + same.file_name + ")";
    }
    return 0;
}

int archive_parts(Archive& archive, std::vector<std::string>& parts, std::string& why) {
    parts.clear();
    if (!not_open(archive, why) || !archive.ops->parts(archive.state, parts, why)) return 0;
    std::sort(parts.begin(), parts.end());
    return 1;
}

int archive_surveys(Archive& archive, const std::string& part, std::vector<StoredSurvey>& surveys,
                    std::string& why) {
    surveys.clear();
    if (!not_open(archive, why) || !archive.ops->surveys(archive.state, part, surveys, why)) return 0;
    std::sort(surveys.begin(), surveys.end(), [](const StoredSurvey& a, const StoredSurvey& b) {
        return std::tie(a.part, a.date, a.id) < std::tie(b.part, b.date, b.id);
    });
    return 1;
}

int archive_points(Archive& archive, std::int64_t survey_id, std::vector<Point>& points, std::string& why) {
    points.clear();
    bool found = false;
    if (!not_open(archive, why) || !archive.ops->points(archive.state, survey_id, points, found, why)) return 0;
    if (found) return 1;
    why = no_survey(survey_id);
    return 0;
}

int archive_file(Archive& archive, std::int64_t survey_id, std::string& name, std::string& bytes,
                 std::string& why) {
    name.clear();
    bytes.clear();
    bool found = false;
    if (!not_open(archive, why) || !archive.ops->file(archive.state, survey_id, name, bytes, found, why)) return 0;
    if (found) return 1;
    why = no_survey(survey_id);
    return 0;
}

std::string archive_file_out_name(std::int64_t survey_id, const std::string& stored_name) {
    const std::string name = last_part(stored_name);
    if (name.empty() || name == "." || name == "..") return "survey_" + std::to_string(survey_id) + ".ugf";
    return name;
}

int archive_set_minimums(Archive& archive, const std::string& part, const std::vector<MinimumRow>& rows,
                         std::string& why) {
    if (!not_open(archive, why)) return 0;
    if (part.empty()) {
        why = "required thicknesses need the name of their part";
        return 0;
    }
    std::set<std::string> seen;
    for (const MinimumRow& row : rows) {
        if (!seen.insert(row.id).second) {
            why = "the required thickness of " + row.id + " is given twice";
            return 0;
        }
        if (!std::isfinite(row.value)) {
            why = "the required thickness of " + row.id + " is not a number";
            return 0;
        }
    }
    return archive.ops->set_minimums(archive.state, part, rows, why);
}

int archive_minimums(Archive& archive, const std::string& part, std::vector<MinimumRow>& rows,
                     std::string& why) {
    rows.clear();
    if (!not_open(archive, why) || !archive.ops->minimums(archive.state, part, rows, why)) return 0;
    std::sort(rows.begin(), rows.end(), [](const MinimumRow& a, const MinimumRow& b) { return a.id < b.id; });
    return 1;
}

int archive_check(Archive& archive, std::string& why) {
    std::vector<std::string> problems;
    if (!not_open(archive, why) || !archive.ops->check(archive.state, problems, why)) return 0;
    if (problems.empty()) return 1;
    why = archive.name + " is damaged:";
    for (const std::string& problem : problems) why += "\n  " + problem;
    return 0;
}

int archive_copy(Archive& from, Archive& to, CopyCounts& counts, std::string& why) {
    counts = {};
    std::vector<StoredSurvey> surveys;
    if (!archive_surveys(from, "", surveys, why)) return 0;
    // In the order of adding, so that of two surveys of one date the later
    // stored is still the later one in the copy.
    std::sort(surveys.begin(), surveys.end(), [](const StoredSurvey& a, const StoredSurvey& b) { return a.id < b.id; });
    for (StoredSurvey& stored : surveys) {
        NewSurvey survey{.part = stored.part, .date = stored.date, .file_name = stored.file_name,
                         .facts = std::move(stored.facts), .points = {}, .bytes = {}};
        std::string name;
        if (!archive_points(from, stored.id, survey.points, why) ||
            !archive_file(from, stored.id, name, survey.bytes, why))
            return 0;
        std::int64_t id = 0, existing = 0;
        if (archive_add(to, survey, id, existing, why)) {
            ++counts.copied;
        } else if (existing > 0) {
            ++counts.skipped;
        } else {
            return 0;
        }
    }
    std::vector<std::string> parts;
    if (!archive_parts(from, parts, why)) return 0;
    for (const std::string& part : parts) {
        std::vector<MinimumRow> rows;
        if (!archive_minimums(from, part, rows, why)) return 0;
        if (rows.empty()) continue;
        if (!archive_set_minimums(to, part, rows, why)) return 0;
        ++counts.minimum_tables;
    }
    why.clear();
    return 1;
}

}  // namespace ugf::kit
