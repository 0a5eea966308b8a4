// Streaming writer of one-sheet workbooks.
//
// A workbook is a zip holding [Content_Types].xml, _rels/.rels,
// xl/workbook.xml, xl/_rels/workbook.xml.rels, xl/worksheets/sheet1.xml and
// xl/styles.xml. Every member is deflated as it is written and followed by a
// data descriptor (general purpose flag bit 3) that gives its checksum and
// sizes, so the file is written front to back without a seek. The sheet holds
// its texts inline (t="inlineStr") rather than in a shared string table,
// which would have to be kept whole until the end; the styles come last,
// once every number format of the sheet is known.
#include "xlsx.h"

#include <cstring>

#include "base/utf8.h"

#if defined(UGF_XLSX_STORED)
// Without zlib (the WebAssembly build has none) the members are deflate
// streams of stored blocks: the same zip, its members not compressed.
struct z_stream_s {
    unsigned char* next_in = nullptr;
    unsigned avail_in = 0;
    unsigned char* next_out = nullptr;
    unsigned avail_out = 0;
    int finished = 0;
};
using Bytef = unsigned char;
using uInt = unsigned;
namespace {
constexpr int Z_OK = 0;
constexpr int Z_STREAM_END = 1;
constexpr int Z_STREAM_ERROR = -2;
constexpr int Z_NO_FLUSH = 0;
constexpr int Z_FINISH = 4;
constexpr int MAX_WBITS = 15;
constexpr int Z_DEFAULT_COMPRESSION = -1;
constexpr int Z_DEFLATED = 8;
constexpr int Z_DEFAULT_STRATEGY = 0;

std::uint32_t crc32(std::uint32_t crc, const Bytef* data, uInt size) {
    if (data == nullptr) return 0;
    crc = ~crc;
    for (uInt i = 0; i < size; ++i) {
        crc ^= data[i];
        for (int k = 0; k < 8; ++k) crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}
int deflateInit2(z_stream_s* z, int, int, int, int, int) {
    *z = z_stream_s{};
    return Z_OK;
}
int deflateReset(z_stream_s* z) {
    z->finished = 0;
    return Z_OK;
}
void deflateEnd(z_stream_s*) {}
// One stored block of as much input as the output buffer has room for, the
// last one (with what is left) at the finish. A block that fills the buffer
// leaves no room, so the caller comes back with a fresh buffer, as it does
// when zlib fills it.
int deflate(z_stream_s* z, int flush) {
    if (z->avail_out <= 5) return Z_STREAM_ERROR;
    const unsigned room = z->avail_out - 5 < 65535u ? z->avail_out - 5 : 65535u;
    const unsigned n = z->avail_in < room ? z->avail_in : room;
    const bool last = flush == Z_FINISH && n == z->avail_in;
    if (n == 0 && !last) return Z_OK;
    unsigned char* o = z->next_out;
    o[0] = last ? 1 : 0;
    o[1] = static_cast<unsigned char>(n & 0xFF);
    o[2] = static_cast<unsigned char>(n >> 8);
    o[3] = static_cast<unsigned char>(~n & 0xFF);
    o[4] = static_cast<unsigned char>((~n >> 8) & 0xFF);
    if (n != 0) std::memcpy(o + 5, z->next_in, n);
    z->next_in += n;
    z->avail_in -= n;
    z->next_out += n + 5;
    z->avail_out -= n + 5;
    return last ? Z_STREAM_END : Z_OK;
}
}  // namespace
#else
#include <zlib.h>
#endif

namespace ugf {

void ZipDeflateEnd::operator()(z_stream_s* stream) const {
    deflateEnd(stream);
    delete stream;
}

namespace {

constexpr std::uint32_t kMaxRows = 1048576;
constexpr std::size_t kMaxColumns = 16384;
constexpr std::size_t kFlushSize = 1 << 16;  // sheet text handed to deflate at once
constexpr std::uint64_t kZip32Limit = 0xFFFFFFFFu;  // sizes and offsets without zip64
constexpr std::uint16_t kZipFlags = 0x0008;   // sizes and checksum in a data descriptor
constexpr std::uint16_t kZipDeflated = 8;
constexpr std::uint16_t kZipVersion = 20;     // 2.0: deflate
constexpr std::uint16_t kZipDate = 0x0021;    // 1980-01-01, time 00:00: no clock in the file
constexpr int kFirstCustomFormat = 164;       // ids below are the spreadsheet's built-in formats

constexpr const char* kXmlHead = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";
constexpr const char* kMainNs = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
constexpr const char* kRelNs = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";

constexpr const char* kContentTypes =
    "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">"
    "<Default Extension=\"rels\" ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
    "<Default Extension=\"xml\" ContentType=\"application/xml\"/>"
    "<Override PartName=\"/xl/workbook.xml\" ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml\"/>"
    "<Override PartName=\"/xl/worksheets/sheet1.xml\" ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml\"/>"
    "<Override PartName=\"/xl/styles.xml\" ContentType=\"application/vnd.openxmlformats-officedocument.spreadsheetml.styles+xml\"/>"
    "</Types>";
constexpr const char* kPackageRels =
    "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
    "<Relationship Id=\"rId1\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument\" Target=\"xl/workbook.xml\"/>"
    "</Relationships>";
constexpr const char* kWorkbookRels =
    "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
    "<Relationship Id=\"rId1\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/worksheet\" Target=\"worksheets/sheet1.xml\"/>"
    "<Relationship Id=\"rId2\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles\" Target=\"styles.xml\"/>"
    "</Relationships>";
// The first row and column stay in view while the rest scrolls.
constexpr const char* kSheetHead =
    "<sheetViews><sheetView workbookViewId=\"0\">"
    "<pane xSplit=\"1\" ySplit=\"1\" topLeftCell=\"B2\" activePane=\"bottomRight\" state=\"frozen\"/>"
    "<selection pane=\"bottomRight\"/></sheetView></sheetViews><sheetData>";
// The parts of styles.xml that every workbook needs whatever its cells.
constexpr const char* kStyleBase =
    "<fonts count=\"1\"><font><sz val=\"11\"/><name val=\"Calibri\"/></font></fonts>"
    "<fills count=\"2\"><fill><patternFill patternType=\"none\"/></fill>"
    "<fill><patternFill patternType=\"gray125\"/></fill></fills>"
    "<borders count=\"1\"><border><left/><right/><top/><bottom/><diagonal/></border></borders>"
    "<cellStyleXfs count=\"1\"><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\"/></cellStyleXfs>";
constexpr const char* kStyleTail =
    "<cellStyles count=\"1\"><cellStyle name=\"Normal\" xfId=\"0\" builtinId=\"0\"/></cellStyles>"
    "</styleSheet>";

void put16(std::string& out, std::uint32_t v) {
    out.push_back(static_cast<char>(v & 0xFF));
    out.push_back(static_cast<char>((v >> 8) & 0xFF));
}

void put32(std::string& out, std::uint32_t v) {
    put16(out, v & 0xFFFF);
    put16(out, v >> 16);
}

int write_bytes(XlsxWriter& w, const void* data, std::size_t size) {
    if (w.ok && std::fwrite(data, 1, size, w.file) != size) w.ok = 0;
    w.written += size;
    return w.ok;
}

// The local header of a member whose checksum and sizes follow its data.
int begin_member(XlsxWriter& w, const char* name) {
    if (!w.ok) return 0;
    if (deflateReset(w.deflate.get()) != Z_OK) return w.ok = 0;
    ZipEntry entry;
    entry.name = name;
    entry.crc = static_cast<std::uint32_t>(crc32(0, nullptr, 0));
    entry.offset = w.written;
    std::string head;
    put32(head, 0x04034b50);
    put16(head, kZipVersion);
    put16(head, kZipFlags);
    put16(head, kZipDeflated);
    put16(head, 0);
    put16(head, kZipDate);
    for (int i = 0; i < 3; ++i) put32(head, 0);  // checksum and sizes: in the descriptor
    put16(head, static_cast<std::uint32_t>(entry.name.size()));
    put16(head, 0);
    head += entry.name;
    w.entries.push_back(entry);
    return write_bytes(w, head.data(), head.size());
}

// Deflates `size` bytes into the open member; `finish` ends its stream.
int deflate_into_member(XlsxWriter& w, const char* data, std::size_t size, int finish) {
    if (!w.ok) return 0;
    ZipEntry& entry = w.entries.back();
    z_stream_s* z = w.deflate.get();
    if (size > 0)  // crc32 of no buffer gives the initial value, not the running one
        entry.crc = static_cast<std::uint32_t>(
            crc32(entry.crc, reinterpret_cast<const Bytef*>(data), static_cast<uInt>(size)));
    entry.size += size;
    z->next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data));
    z->avail_in = static_cast<uInt>(size);
    int result;
    do {
        z->next_out = w.packed.data();
        z->avail_out = static_cast<uInt>(w.packed.size());
        result = ::deflate(z, finish ? Z_FINISH : Z_NO_FLUSH);
        if (result == Z_STREAM_ERROR) return w.ok = 0;
        std::size_t out = w.packed.size() - z->avail_out;
        entry.packed += out;
        if (!write_bytes(w, w.packed.data(), out)) return 0;
    } while (finish ? result != Z_STREAM_END : z->avail_out == 0);
    return 1;
}

int end_member(XlsxWriter& w) {
    if (!deflate_into_member(w, nullptr, 0, 1)) return 0;
    const ZipEntry& entry = w.entries.back();
    if (entry.size > kZip32Limit || entry.packed > kZip32Limit) return w.ok = 0;
    std::string tail;
    put32(tail, 0x08074b50);
    put32(tail, entry.crc);
    put32(tail, static_cast<std::uint32_t>(entry.packed));
    put32(tail, static_cast<std::uint32_t>(entry.size));
    return write_bytes(w, tail.data(), tail.size());
}

int write_member(XlsxWriter& w, const char* name, const std::string& text) {
    return begin_member(w, name) && deflate_into_member(w, text.data(), text.size(), 0) &&
           end_member(w);
}

int write_directory(XlsxWriter& w) {
    std::uint64_t start = w.written;
    std::string dir;
    for (const ZipEntry& entry : w.entries) {
        put32(dir, 0x02014b50);
        put16(dir, kZipVersion);  // made by
        put16(dir, kZipVersion);  // needed
        put16(dir, kZipFlags);
        put16(dir, kZipDeflated);
        put16(dir, 0);
        put16(dir, kZipDate);
        put32(dir, entry.crc);
        put32(dir, static_cast<std::uint32_t>(entry.packed));
        put32(dir, static_cast<std::uint32_t>(entry.size));
        put16(dir, static_cast<std::uint32_t>(entry.name.size()));
        for (int i = 0; i < 4; ++i) put16(dir, 0);  // extra, comment, disk, internal attributes
        put32(dir, 0);                               // external attributes
        put32(dir, static_cast<std::uint32_t>(entry.offset));
        dir += entry.name;
    }
    if (start + dir.size() > kZip32Limit) return w.ok = 0;
    std::uint32_t dir_size = static_cast<std::uint32_t>(dir.size());
    put32(dir, 0x06054b50);
    put16(dir, 0);  // this disk
    put16(dir, 0);  // the disk of the directory
    put16(dir, static_cast<std::uint32_t>(w.entries.size()));
    put16(dir, static_cast<std::uint32_t>(w.entries.size()));
    put32(dir, dir_size);
    put32(dir, static_cast<std::uint32_t>(start));
    put16(dir, 0);  // comment
    return write_bytes(w, dir.data(), dir.size());
}

// The cell text as XML character data: valid UTF-8 stays, any other byte is
// read as Latin-1, characters that XML 1.0 cannot hold (and carriage return,
// which XML readers turn into a line feed) become _xHHHH_, and a "_x" of
// the text is written "_x005F_x" so that no reader decodes it.
void append_xml_text(std::string& out, std::string_view text) {
    for (std::size_t i = 0, length; i < text.size(); i += length) {
        char32_t cp = next_char(text, i, length);
        if ((cp < 0x20 && cp != '\t' && cp != '\n') || cp == 0xFFFE || cp == 0xFFFF) {
            static constexpr char kHex[] = "0123456789ABCDEF";
            out += "_x";
            for (int shift = 12; shift >= 0; shift -= 4) out.push_back(kHex[(cp >> shift) & 0xF]);
            out.push_back('_');
        } else if (cp == '_' && i + 1 < text.size() && text[i + 1] == 'x') {
            out += "_x005F_";
        } else if (cp == '&') {
            out += "&amp;";
        } else if (cp == '<') {
            out += "&lt;";
        } else if (cp == '>') {
            out += "&gt;";
        } else if (cp == '"') {
            out += "&quot;";
        } else if (length > 1 || cp < 0x80) {
            out.append(text.substr(i, length));
        } else {
            append_utf8(out, cp);  // a byte read as Latin-1
        }
    }
}

// The number format that shows `text` exactly ("0.250" -> "0.000", "01" ->
// "00", ".5" -> "#.0"), and the value to store in `value`; the empty format
// when `text` is not a plain decimal number that a spreadsheet shows exactly.
std::string number_format_of(std::string_view text, std::string& value) {
    std::size_t i = 0, n = text.size();
    int negative = n > 0 && text[0] == '-';
    i += static_cast<std::size_t>(negative);
    std::size_t int_start = i;
    while (i < n && text[i] >= '0' && text[i] <= '9') ++i;
    std::string_view whole = text.substr(int_start, i - int_start);
    std::string_view fraction;
    if (i < n && text[i] == '.') {
        std::size_t frac_start = ++i;
        while (i < n && text[i] >= '0' && text[i] <= '9') ++i;
        fraction = text.substr(frac_start, i - frac_start);
        if (fraction.empty()) return {};  // "5.": a format cannot end in the point alone
    }
    if (i != n || whole.size() + fraction.size() == 0) return {};
    // Significant digits start at the first one that isn't 0. A spreadsheet
    // shows 15 of them; the total bound keeps the formats short and few.
    std::string digits = std::string(whole) + std::string(fraction);
    std::size_t first = digits.find_first_not_of('0');
    if (first == std::string::npos ? negative : digits.size() - first > 15) return {};
    if (digits.size() > 30) return {};
    std::size_t lead = whole.find_first_not_of('0');
    value = negative ? "-" : "";
    value += lead == std::string_view::npos ? "0" : std::string(whole.substr(lead));
    std::string format;
    if (whole.empty())
        format = "#";  // ".5": no digit before the point
    else if (whole.size() > 1 && whole[0] == '0')
        format.assign(whole.size(), '0');  // "01": the leading zeros are shown
    else
        format = "0";
    if (!fraction.empty()) {
        value.push_back('.');
        value += fraction;
        format.push_back('.');
        format.append(fraction.size(), '0');
    }
    return format;
}

// Spreadsheets refuse a sheet name with : \ / ? * [ ], longer than 31
// characters, or with an apostrophe at either end; those characters and
// control characters become "_".
std::string sheet_name_text(std::string_view name) {
    std::string utf8;
    std::size_t count = 0;
    for (std::size_t i = 0, length; i < name.size() && count < 31; i += length, ++count) {
        char32_t cp = next_char(name, i, length);
        if (cp < 0x20 || (cp < 0x80 && std::strchr(":\\/?*[]", static_cast<int>(cp)) != nullptr))
            cp = '_';
        append_utf8(utf8, cp);
    }
    if (utf8.empty()) utf8 = "Sheet1";
    if (utf8.front() == '\'') utf8.front() = '_';  // nor may it begin or end with an apostrophe
    if (utf8.back() == '\'') utf8.back() = '_';
    std::string xml;
    append_xml_text(xml, utf8);
    return xml;
}

void append_column_name(std::string& out, std::size_t column) {
    char letters[4];
    int n = 0;
    for (std::size_t c = column + 1; c > 0; c = (c - 1) / 26)
        letters[n++] = static_cast<char>('A' + (c - 1) % 26);
    while (n > 0) out.push_back(letters[--n]);
}

int style_of(XlsxWriter& w, int right, const std::string& format) {
    std::string key = (right ? "1" : "0") + format;
    auto found = w.styles.find(key);
    if (found != w.styles.end()) return found->second;
    int index = static_cast<int>(w.styles.size()) + 2;
    w.styles.emplace(key, index);
    return index;
}

// styles.xml: the two text styles (plain and right-aligned), then one style
// for each number format and alignment that the sheet used.
std::string styles_text(const XlsxWriter& w) {
    std::vector<const std::string*> by_index(w.styles.size());
    std::map<std::string, int> format_ids;
    for (const auto& [key, index] : w.styles) {
        by_index[static_cast<std::size_t>(index - 2)] = &key;
        format_ids.emplace(key.substr(1), 0);
    }
    std::string xml = std::string(kXmlHead) + "<styleSheet xmlns=\"" + kMainNs + "\">";
    if (!format_ids.empty()) {
        xml += "<numFmts count=\"" + std::to_string(format_ids.size()) + "\">";
        int id = kFirstCustomFormat;
        for (auto& [format, format_id] : format_ids) {
            format_id = id++;
            xml += "<numFmt numFmtId=\"" + std::to_string(format_id) + "\" formatCode=\"" + format + "\"/>";
        }
        xml += "</numFmts>";
    }
    xml += kStyleBase;
    xml += "<cellXfs count=\"" + std::to_string(by_index.size() + 2) + "\">";
    xml += "<xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\" xfId=\"0\"/>";
    xml += "<xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\" xfId=\"0\" applyAlignment=\"1\">"
           "<alignment horizontal=\"right\"/></xf>";
    for (const std::string* key : by_index) {
        xml += "<xf numFmtId=\"" + std::to_string(format_ids[key->substr(1)]) +
               "\" fontId=\"0\" fillId=\"0\" borderId=\"0\" xfId=\"0\" applyNumberFormat=\"1\"";
        xml += (*key)[0] == '1' ? " applyAlignment=\"1\"><alignment horizontal=\"right\"/></xf>" : "/>";
    }
    xml += "</cellXfs>";
    xml += kStyleTail;
    return xml;
}

int flush_sheet(XlsxWriter& w) {
    int ok = deflate_into_member(w, w.pending.data(), w.pending.size(), 0);
    w.pending.clear();
    return ok;
}

}  // namespace

int xlsx_begin(XlsxWriter& w, std::FILE* file, std::string_view sheet_name) {
    w = XlsxWriter{};
    w.file = file;
    w.ok = 1;
    w.packed.resize(1 << 16);
    w.deflate.reset(new z_stream_s{});
    if (deflateInit2(w.deflate.get(), Z_DEFAULT_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 8,
                     Z_DEFAULT_STRATEGY) != Z_OK) {
        delete w.deflate.release();  // nothing to end: freed without deflateEnd
        return w.ok = 0;
    }
    std::string head = kXmlHead;
    std::string workbook = head + "<workbook xmlns=\"" + kMainNs + "\" xmlns:r=\"" + kRelNs +
                           "\"><bookViews><workbookView/></bookViews><sheets><sheet name=\"" +
                           sheet_name_text(sheet_name) +
                           "\" sheetId=\"1\" r:id=\"rId1\"/></sheets></workbook>";
    if (!write_member(w, "[Content_Types].xml", head + kContentTypes) ||
        !write_member(w, "_rels/.rels", head + kPackageRels) ||
        !write_member(w, "xl/workbook.xml", workbook) ||
        !write_member(w, "xl/_rels/workbook.xml.rels", head + kWorkbookRels) ||
        !begin_member(w, "xl/worksheets/sheet1.xml"))
        return 0;
    w.pending = head + "<worksheet xmlns=\"" + kMainNs + "\">" + kSheetHead;
    return 1;
}

int xlsx_add_row(XlsxWriter& w, const std::vector<std::string>& cells, int title_row,
                 const std::vector<int>& text_columns) {
    if (!w.ok) return 0;
    if (w.row_count == kMaxRows || cells.size() > kMaxColumns) return w.ok = 0;
    std::string row_number = std::to_string(++w.row_count);
    std::string& out = w.pending;
    std::size_t row_start = out.size();
    out += "<row r=\"" + row_number + "\">";
    std::size_t cells_start = out.size();
    std::string value;
    for (std::size_t c = 0; c < cells.size(); ++c) {
        std::string_view text = cells[c];
        std::size_t blanks = text.find_first_not_of(' ');
        if (blanks == std::string_view::npos) continue;  // empty: left out
        text.remove_prefix(blanks);
        int right = blanks > 0;
        std::string format;
        int as_text = title_row;
        for (int t : text_columns) as_text |= t >= 0 && static_cast<std::size_t>(t) == c;
        if (!as_text) format = number_format_of(text, value);
        out += "<c r=\"";
        append_column_name(out, c);
        out += row_number + "\"";
        if (!format.empty()) {
            out += " s=\"" + std::to_string(style_of(w, right, format)) + "\"><v>" + value + "</v></c>";
        } else {
            out += right ? " s=\"1\"" : "";
            out += " t=\"inlineStr\"><is><t xml:space=\"preserve\">";
            append_xml_text(out, text);
            out += "</t></is></c>";
        }
    }
    if (out.size() == cells_start)
        out.resize(row_start);  // a row without cells is left out too
    else
        out += "</row>";
    return out.size() < kFlushSize || flush_sheet(w);
}

int xlsx_finish(XlsxWriter& w) {
    if (!w.ok) return 0;
    w.pending += "</sheetData></worksheet>";
    int ok = flush_sheet(w) && end_member(w) && write_member(w, "xl/styles.xml", styles_text(w)) &&
             write_directory(w);
    w.deflate.reset();
    w.ok = 0;  // finished: later calls fail instead of writing past the directory
    return ok;
}

}  // namespace ugf
