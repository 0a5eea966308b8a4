// libFuzzer target: any bytes as a datalogger image, made into its report
// page (default minimum and a nominal); a page must be valid UTF-8 with
// balanced tags.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "ugf/report.hpp"

bool balanced_page(const std::string& page);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static ugf::kit::Survey survey;
    std::string why, page;
    if (ugf::kit::open_survey_memory(survey, data, size, why) == 0) return 0;
    ugf::kit::ReportOptions options;
    if (size % 2 == 1) options.nominal = 0.25;
    if (ugf::kit::survey_report(survey, options, page, why) != 0 && !balanced_page(page)) std::abort();
    return 0;
}

// Every tag closed in order, and no byte outside UTF-8.
bool balanced_page(const std::string& page) {
    std::string stack;
    for (std::size_t i = 0; i < page.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(page[i]);
        if (c >= 0x80) {
            const std::size_t n = c >= 0xF0 ? 4 : c >= 0xE0 ? 3 : c >= 0xC2 ? 2 : 0;
            if (n == 0 || i + n > page.size()) return false;
            for (std::size_t k = 1; k < n; ++k) {
                if ((static_cast<unsigned char>(page[i + k]) & 0xC0) != 0x80) return false;
            }
            i += n - 1;
            continue;
        }
        if (c != '<' || page.compare(i, 2, "<!") == 0) continue;
        const std::size_t end = page.find('>', i);
        if (end == std::string::npos) return false;
        const bool closing = page[i + 1] == '/', empty = page[end - 1] == '/';
        const std::size_t start = i + (closing ? 2 : 1);
        const std::string name = page.substr(start, page.find_first_of(" />", start) - start) + "\n";
        if (closing) {
            if (stack.size() < name.size() || stack.compare(stack.size() - name.size(), name.size(), name) != 0) return false;
            stack.resize(stack.size() - name.size());
        } else if (!empty) {
            stack += name;
        }
        i = end;
    }
    return stack.empty();
}
