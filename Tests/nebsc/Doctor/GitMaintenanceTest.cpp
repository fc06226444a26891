// What git's own maintenance does, by settings.

#include "Doctor/GitMaintenance.h"

#include <gmock/gmock.h>

#include "Support/TemporaryFolder.h"

namespace neb::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class GitMaintenance : public testing::Test {
protected:
    struct Row {
        const char* key;
        std::string value;
    };

    [[nodiscard]] nebsc::GitMaintenance with(const std::vector<Row>& rows) {
        std::string list;
        for (const Row& row : rows) {
            list += std::string("local") + '\0' + row.key + "\n" + row.value + '\0';
        }
        _settings = nebsc::UserSettings(list);
        return {_settings, _repository};
    }

    TemporaryFolder _folder;
    nebsc::UserSettings _settings;
    nebsc::RepositoryLayout _repository{.gitFolder = _folder.path(".git"),
                                        .commonFolder = _folder.path(".git"),
                                        .workingCopy = _folder.path()};
};

TEST_F(GitMaintenance, GCPacksManyObjectsAndPacksByDefault) {
    const auto byDefault = with({});
    EXPECT_THAT(byDefault.packsLooseObjects(6700), IsEmpty());
    EXPECT_THAT(byDefault.packsLooseObjects(6701), HasSubstr("automatic maintenance"));
    EXPECT_THAT(byDefault.combinesPacks(50), IsEmpty());
    EXPECT_THAT(byDefault.combinesPacks(51), HasSubstr("automatic maintenance"));
    EXPECT_THAT(byDefault.updatesCommitGraph(), IsEmpty());
}

TEST_F(GitMaintenance, SettingsMoveTheLimitsAndSwitchItOff) {
    EXPECT_THAT(with({{"gc.auto", "1k"}}).packsLooseObjects(1025), HasSubstr("packs them"));
    EXPECT_THAT(with({{"gc.auto", "1k"}}).packsLooseObjects(1024), IsEmpty());
    EXPECT_THAT(with({{"gc.auto", "1M"}}).packsLooseObjects(1048577), HasSubstr("packs them"));
    EXPECT_THAT(with({{"gc.autopacklimit", "5"}}).combinesPacks(6), HasSubstr("combines them"));
    EXPECT_THAT(with({{"gc.autopacklimit", "0"}}).combinesPacks(100000), IsEmpty());
    EXPECT_THAT(with({{"gc.auto", "0"}}).packsLooseObjects(100000), IsEmpty());
    EXPECT_THAT(with({{"gc.auto", "0"}}).combinesPacks(100000), IsEmpty());
    EXPECT_THAT(with({{"maintenance.auto", "no"}}).packsLooseObjects(100000), IsEmpty());
}

TEST_F(GitMaintenance, AFailureOfGCStopsIt) {
    static_cast<void>(_folder.write(".git/gc.log", ""));
    EXPECT_THAT(with({}).packsLooseObjects(10000), HasSubstr("packs them"));
    const std::string log = _folder.write(".git/gc.log", "warning: too many objects\n");
    EXPECT_THAT(with({}).packsLooseObjects(10000), IsEmpty());
    std::filesystem::last_write_time(
        log, std::filesystem::file_time_type::clock::now() - std::chrono::hours(25));
    EXPECT_THAT(with({}).packsLooseObjects(10000), HasSubstr("packs them"));
}

TEST_F(GitMaintenance, ARegisteredRepositoryIsMaintainedOnASchedule) {
    const Row strategy{"maintenance.strategy", "incremental"};
    const Row automatic{"maintenance.auto", "false"};
    for (const std::string& folder : {_folder.path(), _folder.path(".git")}) {
        const auto registered = with(
            {{"maintenance.repo", folder}, {"maintenance.repo", "/another"}, strategy, automatic});
        EXPECT_THAT(registered.packsLooseObjects(1), HasSubstr("scheduled maintenance packs"));
        EXPECT_THAT(registered.combinesPacks(1), HasSubstr("scheduled maintenance indexes"));
        EXPECT_THAT(registered.updatesCommitGraph(), HasSubstr("scheduled maintenance updates"));
    }
    EXPECT_THAT(with({{"maintenance.repo", "/another"}, strategy, automatic}).updatesCommitGraph(),
                IsEmpty());
}

TEST_F(GitMaintenance, TasksAreSwitchedOneByOne) {
    const Row registered{"maintenance.repo", _folder.path()};
    const Row strategy{"maintenance.strategy", "incremental"};
    EXPECT_THAT(with({registered, strategy, {"maintenance.commit-graph.enabled", "false"}})
                    .updatesCommitGraph(),
                IsEmpty());
    EXPECT_THAT(with({registered, strategy, {"maintenance.commit-graph.schedule", "none"}})
                    .updatesCommitGraph(),
                IsEmpty());
    EXPECT_THAT(
        with({registered, {"maintenance.commit-graph.schedule", "daily"}}).updatesCommitGraph(),
        HasSubstr("scheduled"));
    EXPECT_THAT(with({{"maintenance.commit-graph.enabled", "true"}}).updatesCommitGraph(),
                HasSubstr("automatic maintenance updates it after the next commit"));
    EXPECT_THAT(with({{"maintenance.loose-objects.enabled", "true"}}).packsLooseObjects(1),
                HasSubstr("automatic"));
}

TEST_F(GitMaintenance, AFetchUpdatesTheCommitGraph) {
    EXPECT_EQ(with({{"fetch.writecommitgraph", "true"}}).updatesCommitGraph(),
              "The next fetch updates it.");
    EXPECT_EQ(with({{"feature.experimental", "true"}}).updatesCommitGraph(),
              "The next fetch updates it.");
    EXPECT_THAT(with({{"feature.experimental", "true"}, {"fetch.writecommitgraph", "false"}})
                    .updatesCommitGraph(),
                IsEmpty());
}

}  // namespace
}  // namespace neb::test
