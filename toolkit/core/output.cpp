#include "ugf/files.hpp"

#include "base/files.h"
#include "run/output_name.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <random>
#include <system_error>
#include <vector>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace ugf::kit {

namespace fs = std::filesystem;

namespace {

fs::path to_path(const std::string& utf8) {
    return fs::path(std::u8string(reinterpret_cast<const char8_t*>(utf8.data()), utf8.size()));
}

std::string to_utf8(const fs::path& path) {
    const std::u8string s = path.u8string();
    return std::string(reinterpret_cast<const char*>(s.data()), s.size());
}

std::string error_text(int error) { return std::strerror(error); }

// A name for a temporary file that no other run or thread is likely to
// pick: the time and a random number (the caller creates it exclusively and
// picks again where the name is taken).
std::string temporary_name(const std::string& target) {
    const auto now = static_cast<unsigned long long>(
        std::chrono::steady_clock::now().time_since_epoch().count());
    const fs::path t = to_path(target);
    std::string name = ".";
    name += to_utf8(t.filename());
    name += ".tmp" + std::to_string(now % 1000000007ull) + "-" + std::to_string(std::random_device{}());
    return to_utf8(t.parent_path() / to_path(name));
}

}  // namespace

bool has_survey_extension(const std::string& name) {
    if (name.size() < 4) return false;
    std::string ext = name.substr(name.size() - 4);
    std::transform(ext.begin(), ext.end(), ext.begin(), [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
    return ext == ".ugf";
}

int find_surveys(const std::string& path, std::vector<Input>& inputs, std::string& why) {
    std::error_code ec;
    const fs::path root = to_path(path);
    if (fs::is_regular_file(root, ec)) {
        inputs.push_back({path, ""});
        return 1;
    }
    if (!fs::is_directory(root, ec)) {
        why = fs::exists(root, ec) ? "not a file or a folder" : "no such file or folder";
        return 0;
    }
    std::vector<Input> found;
    for (fs::recursive_directory_iterator it(root, fs::directory_options::skip_permission_denied, ec), end;
         !ec && it != end; it.increment(ec)) {
        std::error_code kind;
        if (!it->is_regular_file(kind) || !has_survey_extension(to_utf8(it->path().filename()))) continue;
        found.push_back({to_utf8(it->path()), to_utf8(it->path().parent_path().lexically_relative(root))});
    }
    if (ec) {
        why = "cannot read the folder: " + ec.message();
        return 0;
    }
    std::sort(found.begin(), found.end(), [](const Input& a, const Input& b) { return a.path < b.path; });
    for (Input& i : found) {
        if (i.subfolder == ".") i.subfolder.clear();
        inputs.push_back(std::move(i));
    }
    return 1;
}

std::string output_name(const std::string& name, const std::string& ending) {
    const std::size_t stem = has_survey_extension(name) ? output_stem_length(name.size()) : name.size();
    return name.substr(0, stem) + ending;
}

std::string output_path(const Input& input, const std::string& ending, const std::string& out_dir) {
    const std::string named = output_name(input.path, ending);
    if (out_dir.empty()) return named;
    fs::path dir = to_path(out_dir);
    if (!input.subfolder.empty()) dir /= to_path(input.subfolder);
    return to_utf8(dir / to_path(named).filename());
}

int atomic_open(AtomicFile& out, const std::string& target, bool text, std::string& why) {
    out = AtomicFile{};
    out.target = target;
    std::error_code ec;
    const fs::path folder = to_path(target).parent_path();
    if (!folder.empty()) fs::create_directories(folder, ec);
    for (int attempt = 0; attempt < 100 && out.file == nullptr; ++attempt) {
        out.temporary = temporary_name(target);
#if defined(_WIN32)
        HANDLE h = CreateFileW(utf8_to_wide(out.temporary.c_str()).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
        if (h == INVALID_HANDLE_VALUE) {
            if (GetLastError() == ERROR_FILE_EXISTS) continue;
            why = "cannot create the output " + target;
            return 0;
        }
        const int fd = _open_osfhandle(reinterpret_cast<intptr_t>(h), text ? _O_TEXT : _O_BINARY);
        out.file = fd < 0 ? nullptr : _fdopen(fd, text ? "w" : "wb");
#else
        (void)text;
        const int fd = open(out.temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0666);
        if (fd < 0) {
            if (errno == EEXIST) continue;
            why = "cannot create the output " + target + ": " + error_text(errno);
            return 0;
        }
        out.file = fdopen(fd, "w");
        if (out.file == nullptr) close(fd);
#endif
        if (out.file == nullptr) {
            atomic_abandon(out);
            why = "cannot create the output " + target;
            return 0;
        }
    }
    if (out.file == nullptr) {
        why = "cannot create the output " + target;
        return 0;
    }
    return 1;
}

int atomic_commit(AtomicFile& out, std::string& why) {
    const bool written = std::ferror(out.file) == 0;
    const int error = errno;
    const bool closed = std::fclose(out.file) == 0;
    out.file = nullptr;
    if (!written || !closed) {
        why = "cannot write the output " + out.target + ": " + error_text(written ? errno : error);
        atomic_abandon(out);
        return 0;
    }
#if defined(_WIN32)
    const bool moved = MoveFileExW(utf8_to_wide(out.temporary.c_str()).c_str(), utf8_to_wide(out.target.c_str()).c_str(),
                                   MOVEFILE_REPLACE_EXISTING) != 0;
#else
    const bool moved = std::rename(out.temporary.c_str(), out.target.c_str()) == 0;
#endif
    if (!moved) {
        why = "cannot replace the output " + out.target + ": " + error_text(errno);
        atomic_abandon(out);
        return 0;
    }
    out.temporary.clear();
    return 1;
}

void atomic_abandon(AtomicFile& out) {
    if (out.file != nullptr) std::fclose(out.file);
    out.file = nullptr;
    if (!out.temporary.empty()) {
        std::error_code ec;
        fs::remove(to_path(out.temporary), ec);
        out.temporary.clear();
    }
}

int write_file_atomically(const std::string& target, const std::string& bytes, bool text, std::string& why) {
    AtomicFile out;
    if (atomic_open(out, target, text, why) == 0) return 0;
    if (!bytes.empty() && std::fwrite(bytes.data(), 1, bytes.size(), out.file) != bytes.size()) {
        why = "cannot write the output " + target + ": " + error_text(errno);
        atomic_abandon(out);
        return 0;
    }
    return atomic_commit(out, why);
}

int read_file(const std::string& path, std::string& bytes, std::string& why) {
    std::FILE* file = open_file(path.c_str(), "rb");
    if (file == nullptr) {
        why = "cannot open: " + error_text(errno);
        return 0;
    }
    bytes.clear();
    std::vector<char> buffer(1 << 16);
    for (std::size_t n; (n = std::fread(buffer.data(), 1, buffer.size(), file)) != 0;) bytes.append(buffer.data(), n);
    const bool failed = std::ferror(file) != 0;
    const int error = errno;
    std::fclose(file);
    if (failed) why = "cannot read: " + error_text(error);
    return failed ? 0 : 1;
}

std::string last_part(const std::string& path) { return path.substr(path.find_last_of("/\\") + 1); }

#if defined(_WIN32)
Arguments utf8_arguments(int argc, wchar_t** argv) {
    ugf::Utf8Arguments args = ugf::utf8_arguments(argc, argv);
    Arguments out;
    out.texts = std::move(args.texts);
    for (const std::string& t : out.texts) out.argv.push_back(t.c_str());
    out.argv.push_back(nullptr);
    return out;
}
#endif

}  // namespace ugf::kit
