// What an implementation of the archive provides: an open function and a
// table of operations over its connection. The checks of the caller's input,
// the SHA-256, the orders of the lists and every text that names a survey are
// made once in archive.cpp, so that each implementation only stores and loads.
// An implementation's texts in `why` are its store's own errors, prefixed
// with the archive's name.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ugf/archive.hpp"

namespace ugf::kit {

// A survey to add, checked and completed by the caller.
struct AddRequest {
    const NewSurvey& survey;
    std::string file_name;  // the last part of the given name
    std::string sha256;
    std::uint64_t readings = 0;
};

struct ArchiveOps {
    void (*close)(ArchiveState* state);
    // 1 with `id` set; 0 with `why`, or 0 with `existing.id` (and its part,
    // date and file name) set when the same bytes are already stored.
    int (*add)(ArchiveState* state, const AddRequest& request, std::int64_t& id, StoredSurvey& existing,
               std::string& why);
    int (*parts)(ArchiveState* state, std::vector<std::string>& parts, std::string& why);
    // In any order; the caller sorts.
    int (*surveys)(ArchiveState* state, const std::string& part, std::vector<StoredSurvey>& surveys,
                   std::string& why);
    // 1 with `found` false for an unknown id.
    int (*points)(ArchiveState* state, std::int64_t id, std::vector<Point>& points, bool& found, std::string& why);
    int (*file)(ArchiveState* state, std::int64_t id, std::string& name, std::string& bytes, bool& found,
                std::string& why);
    int (*set_minimums)(ArchiveState* state, const std::string& part, const std::vector<MinimumRow>& rows,
                        std::string& why);
    int (*minimums)(ArchiveState* state, const std::string& part, std::vector<MinimumRow>& rows, std::string& why);
    // 1 with `problems` empty when all is well.
    int (*check)(ArchiveState* state, std::vector<std::string>& problems, std::string& why);
};

// The SQLite file implementation.
extern const ArchiveOps sqlite_archive_ops;
int sqlite_archive_open(const std::string& path, bool create, ArchiveState*& state, std::string& why);

}  // namespace ugf::kit
