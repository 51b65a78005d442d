#include "store/field_records.h"

#include <fstream>
#include <iterator>

#include "core/config_store.h"

namespace tl {

std::vector<std::vector<std::string>> ReadFieldRecords(const std::string& path,
                                                       size_t fieldsPerRecord) {
    std::vector<std::vector<std::string>> records;
    if (fieldsPerRecord == 0) return records;
    std::ifstream in(path, std::ios::binary);
    if (!in) return records;
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::vector<std::string> current;
    for (std::string& field : SplitInputFields(text)) {
        current.push_back(std::move(field));
        if (current.size() == fieldsPerRecord) {
            records.push_back(std::move(current));
            current.clear();
        }
    }
    return records;
}

}  // namespace tl
