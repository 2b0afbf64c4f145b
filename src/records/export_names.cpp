#include "records/export_names.h"

#include "platform/utf.h"

namespace tarno2 {

bool isOutputName(const std::string& name) {
    const auto characters = utf8ToUtf16(name);  // nothing for a name in a code page, whose characters are bytes
    return !name.empty() && (characters ? characters->size() : name.size()) <= kMaximumOutputName;
}

std::string defaultOutputName(const std::string& dataFileName, const std::string& extension) {
    return dataFileName.substr(0, dataFileName.rfind('.')) + '.' + extension;
}

std::string outputPieceName(const std::string& outputName, uint32_t piece) {
    const size_t dot = outputName.rfind('.');
    const std::string base = outputName.substr(0, dot);
    const std::string extension = dot == std::string::npos ? std::string() : outputName.substr(dot + 1);
    return (piece == 0 ? base : base + '_' + std::to_string(piece)) + '.' + extension;
}

}  // namespace tarno2
