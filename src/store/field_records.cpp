#include "store/field_records.h"

#include <fstream>
#include <iterator>

namespace tl {
namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}
bool IsLineEnd(char c) {
    return c == '\r' || c == '\n';
}

}  // namespace

std::vector<std::vector<std::string>> ReadFieldRecords(const std::string& path,
                                                       size_t fieldsPerRecord) {
    std::vector<std::vector<std::string>> records;
    if (fieldsPerRecord == 0) return records;
    std::ifstream in(path, std::ios::binary);
    if (!in) return records;
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    size_t i = 0;
    const size_t n = text.size();
    std::vector<std::string> current;
    while (true) {
        // Skip blanks and empty lines before a field.
        while (i < n && (IsBlank(text[i]) || IsLineEnd(text[i]))) ++i;
        if (i >= n) break;
        std::string field;
        if (text[i] == '"') {
            const size_t close = text.find('"', i + 1);
            if (close == std::string::npos) {
                field = text.substr(i + 1);
                i = n;
            } else {
                field = text.substr(i + 1, close - i - 1);
                i = close + 1;
            }
            // Anything after the closing quote up to the separator is ignored.
            while (i < n && text[i] != ',' && !IsLineEnd(text[i])) ++i;
        } else {
            const size_t start = i;
            while (i < n && text[i] != ',' && !IsLineEnd(text[i])) ++i;
            field = text.substr(start, i - start);
            while (!field.empty() && IsBlank(field.back())) field.pop_back();
        }
        if (i < n && text[i] == ',') ++i;
        current.push_back(std::move(field));
        if (current.size() == fieldsPerRecord) {
            records.push_back(std::move(current));
            current.clear();
        }
    }
    return records;
}

}  // namespace tl
