// Reading files written as sequences of comma-separated fields, in the way
// the user channel file is read: a field in double quotes runs to the next
// double quote; an unquoted field runs to the next comma or line end and is
// trimmed. Records are groups of a fixed number of fields, the line ends
// counting as separators like the commas.
#pragma once

#include <string>
#include <vector>

namespace tl {

// The records of the file, each of exactly fieldsPerRecord fields. A last
// record cut short by the end of the file is dropped (the original's read
// would have failed on it). An unreadable file gives no records.
std::vector<std::vector<std::string>> ReadFieldRecords(const std::string& path,
                                                       size_t fieldsPerRecord);

}  // namespace tl
