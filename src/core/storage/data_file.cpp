#include "core/storage/data_file.h"

#include "platform/file.h"

namespace tarno2 {

namespace {

class SystemDataFile final : public DataFile {
public:
    OsError create(const std::string& name) override {
        return file_.open(name, FileMode::CreateNew, FileAccess::Write, FileShare::Read);
    }
    OsError write(const std::byte* data, size_t size, size_t& done) override { return file_.write(data, size, done); }
    OsError truncate(uint64_t size) override { return file_.truncate(size); }
    OsError flush() override { return file_.flush(); }
    OsError close() override { return file_.close(); }
    [[nodiscard]] Named named(const std::string& name) const override { return file_.named(name); }

private:
    File file_;
};

}  // namespace

std::unique_ptr<DataFile> makeSystemDataFile() {
    return std::make_unique<SystemDataFile>();
}

}  // namespace tarno2
