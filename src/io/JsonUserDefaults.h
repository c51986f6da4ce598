// The user's settings in one JSON file, written at each change on a background thread, the newest state only.
// A damaged or unreadable file is set aside before anything is written. Keys that we do not know are kept,
// and so is what another program has written to the file meanwhile, but for the keys that were changed here.
#pragma once

#include "io/DocumentWriter.h"
#include "io/JobQueue.h"
#include "platform/Log.h"
#include "platform/UserDefaults.h"

namespace quillmark {

class JsonUserDefaults : public UserDefaults {
public:
    /// Reads the file at once.
    JsonUserDefaults(FileSystem& disk, DocumentWriter& writer, Scheduler& scheduler, Log& log, Path file);
    ~JsonUserDefaults() override; ///< flush()

    std::optional<std::string> string(std::string_view key) const override;
    std::optional<bool> boolean(std::string_view key) const override;
    std::optional<double> real(std::string_view key) const override;
    std::optional<std::string> data(std::string_view key) const override;

    void setString(std::string_view key, std::string_view value) override;
    void setBoolean(std::string_view key, bool value) override;
    void setReal(std::string_view key, double value) override;
    void setData(std::string_view key, std::string_view bytes) override;
    void remove(std::string_view key) override;

    Status flush(); ///< blocks until the settings are on the disk or could not be written

private:
    struct Value; ///< one of the file's
    struct Store;
    void load();
    void set(std::string_view key, const Value& value);
    void save();

    std::shared_ptr<Store> m_store; ///< the values and what the jobs need, shared with them
    JobQueue m_jobs;
};

} // namespace quillmark
