#pragma once

#include "io/DocumentWriter.h"
#include "support/FakeFileSystem.h"
#include "support/ManualScheduler.h"
#include "support/RecordingLog.h"

#include <gtest/gtest.h>

namespace quillmark::test {

/// A program's floor of saving on a disk that can fail.
class FakeDisk : public testing::Test {
protected:
    std::vector<std::string> recovered() const
    {
        std::vector<std::string> result;
        for (const std::string& name : disk.names("/state/recovered"))
            result.push_back(disk.bytes(Path("/state/recovered") / name).value_or("not a file"));
        return result;
    }

    ManualScheduler scheduler;
    FakeFileSystem disk{scheduler};
    RecordingLog log;
    RecoveryStore recovery{disk, scheduler, log, "/state/recovered"};
    DocumentWriter writer{disk, recovery, scheduler};
};

} // namespace quillmark::test
