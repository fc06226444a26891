// ExtensionTest.h - what the tests of the request types from 1000 on share: hostile names, records
// by name, and a plain reader of git's plumbing.
#pragma once

#include <gmock/gmock.h>

#include <map>
#include <string>
#include <vector>

#include "NEBFoundation/NEBSourceControlErrorClassNames.h"
#include "NEBFoundation/NEBSourceControlKeys.h"
#include "Platform/Text.h"
#include "Support/HygienicTest.h"
#include "Support/RecordParts.h"
#include "Support/RequestRun.h"
#include "Support/TestRepository.h"

namespace neb::test {

/// Names of files with a line end, a quote, a TAB, a leading dash, blanks, a backslash, a pattern,
/// a colon, and bytes that are not UTF-8.
inline const std::vector<std::string> hostileNames{"new\nline", "quo\"te",     "t\tab", "-dash",
                                                   " sp ace ",  "back\\slash", "st*r",  ":colon",
                                                   "b\xe4r",    "\u00fc",      "x -> y"};

/// Ids of commits and objects. z40 is the one that git prints for a missing object.
inline const std::string a40(40, 'a');
inline const std::string b40(40, 'b');
inline const std::string z40(40, '0');

/// Returns the bytes of a name or path of a record.
inline std::string nameIn(const NEBDictionary& record,
                          NEBConstant text = NEBSourceControlOperationPathKey,
                          NEBConstant bytes = NEBSourceControlOperationPathBytesKey) {
    const Data* raw = record.value(bytes).bytes();
    const std::string name(record.text(text));
    EXPECT_EQ(raw == nullptr, isUTF8(raw == nullptr ? name : std::string(raw->bytes())));
    EXPECT_TRUE(raw == nullptr || textReplacingInvalidBytes(*raw) == name);
    return raw == nullptr ? name : std::string(raw->bytes());
}

inline std::map<std::string, NEBDictionary> byPath(const NEBSourceControlResult& records) {
    std::map<std::string, NEBDictionary> all;
    for (const NEBDictionary& record : records) {
        if (record.contains(NEBSourceControlOperationPathKey)) {
            EXPECT_TRUE(all.emplace(nameIn(record), record).second) << nameIn(record);
        }
    }
    return all;
}

/// Returns the records of a request that succeeds, and expects the same ones for a sink.
inline NEBSourceControlResult recordsOf(const std::shared_ptr<NEBSourceControlRequest>& request) {
    const auto operation = perform(request);
    EXPECT_FALSE(operation->error().has_value())
        << operation->error()->localizedDescription().value_or("")
        << operation->error()->text.value_or("");
    NEBSourceControlResult delivered;
    performWithSink(request, delivered);
    const NEBSourceControlResult records = operation->result().value_or(NEBSourceControlResult());
    EXPECT_EQ(delivered, records);
    return records;
}

/// Returns the error class of a request that fails.
inline std::string errorClassOf(const std::shared_ptr<NEBSourceControlRequest>& request) {
    const auto operation = perform(request);
    return operation->error() ? operation->error()->errorClass.value_or("(none)") : "(success)";
}

/// Returns the output of git without the line end at its end.
inline std::string lineOf(const TestRepository& repository, std::vector<std::string> arguments) {
    std::string output = repository.git(std::move(arguments));
    while (output.ends_with('\n')) {
        output.pop_back();
    }
    return output;
}

/// Returns the texts before NUL bytes.
inline std::vector<std::string> nulFields(const std::string& output) {
    std::vector<std::string> fields;
    std::size_t start = 0;
    for (std::size_t end = 0; (end = output.find('\0', start)) != std::string::npos;
         start = end + 1) {
        fields.push_back(output.substr(start, end - start));
    }
    return fields;
}

/// Writes, adds and commits a file for each hostile name.
inline void commitHostileNames(const TestRepository& repository) {
    for (const std::string& name : hostileNames) {
        repository.write(name, "one\ntwo\n");
    }
    repository.git({"add", "-A"});
    repository.git({"commit", "-q", "-m", "Hostile names"});
}

/// Leaves a merge with the conflict "both modified" in "c", "deleted by them" in "d" and "deleted
/// by us" in "e".
inline void stopInConflict(const TestRepository& repository) {
    for (const char* name : {"c", "d", "e"}) {
        repository.write(name, "base\n");
    }
    repository.git({"add", "-A"});
    repository.git({"commit", "-q", "-m", "Base"});
    repository.git({"checkout", "-q", "-b", "theirs"});
    repository.write("c", "theirs\n");
    repository.write("e", "theirs\n");
    repository.git({"rm", "-q", "d"});
    repository.git({"commit", "-q", "-a", "-m", "Theirs"});
    repository.git({"checkout", "-q", "main"});
    repository.write("c", "ours\n");
    repository.write("d", "ours\n");
    repository.git({"rm", "-q", "e"});
    repository.git({"commit", "-q", "-a", "-m", "Ours"});
    EXPECT_NE(repository.gitStatus({"merge", "-q", "theirs"}), 0);
}

class ExtensionTest : public HygienicTest {
protected:
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> request(std::int32_t type) const {
        return requestFor(type, repository.path());
    }
    /// Returns a request with one file and these options.
    [[nodiscard]] std::shared_ptr<NEBSourceControlRequest> fileRequest(
        std::int32_t type, const std::string& file, NEBDictionary options = {}) const {
        auto made = request(type);
        made->files = valuesOf({file});
        made->options = std::move(options);
        return made;
    }

    TestRepository repository;
};

}  // namespace neb::test
