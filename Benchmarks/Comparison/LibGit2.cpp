#include "LibGit2.h"

#include <git2.h>

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace neb::benchmarks {

namespace {

void check(int result) {
    if (result < 0) {
        const git_error* error = ::git_error_last();
        throw std::runtime_error(std::string("libgit2: ") +
                                 (error != nullptr ? error->message : "failed"));
    }
}

template <typename T, void (*release)(T*)>
struct Release {
    void operator()(T* object) const { release(object); }
};
template <typename T, void (*release)(T*)>
using Handle = std::unique_ptr<T, Release<T, release>>;

using Repository = Handle<git_repository, ::git_repository_free>;
using Walk = Handle<git_revwalk, ::git_revwalk_free>;
using Commit = Handle<git_commit, ::git_commit_free>;
using Tree = Handle<git_tree, ::git_tree_free>;
using Object = Handle<git_object, ::git_object_free>;
using Diff = Handle<git_diff, ::git_diff_free>;
using StatusList = Handle<git_status_list, ::git_status_list_free>;
using Blame = Handle<git_blame, ::git_blame_free>;
using Reference = Handle<git_reference, ::git_reference_free>;
using ReferenceIterator = Handle<git_reference_iterator, ::git_reference_iterator_free>;
using Config = Handle<git_config, ::git_config_free>;
using Buffer = Handle<git_buf, ::git_buf_dispose>;

/// Returns the object that `get(&object, …)` creates, with its release function.
template <typename H, typename Get, typename... Arguments>
H made(Get get, Arguments... arguments) {
    typename H::pointer object = nullptr;
    check(get(&object, arguments...));
    return H(object);
}

Repository open(const std::string& path) {
    return made<Repository>(::git_repository_open, path.c_str());
}

/// The length of abbreviated ids in our records.
std::string shortName(const git_oid& id) {
    std::array<char, 13> text{};
    ::git_oid_tostr(text.data(), text.size(), &id);
    return text.data();
}

std::string fullName(const git_oid& id) {
    std::array<char, GIT_OID_HEXSZ + 1> text{};
    ::git_oid_tostr(text.data(), text.size(), &id);
    return text.data();
}

/// Returns the full names of the references to each commit.
std::map<std::string, std::vector<std::string>> referencesByID(git_repository* repository) {
    std::map<std::string, std::vector<std::string>> references;
    const auto iterator = made<ReferenceIterator>(::git_reference_iterator_new, repository);
    git_reference* next = nullptr;
    while (::git_reference_next(&next, iterator.get()) == 0) {
        const Reference reference(next);
        if (const git_oid* id = ::git_reference_target(reference.get())) {
            references[fullName(*id)].emplace_back(::git_reference_name(reference.get()));
        }
    }
    return references;
}

struct FileRecord {
    std::string path;
    int status;
};

struct CommitRecord {
    std::string revision, author, email, message;
    git_time_t date;
    std::vector<FileRecord> files;
};

Tree treeOf(const git_commit* commit) {
    return made<Tree>(::git_commit_tree, commit);
}

std::vector<FileRecord> filesOf(const git_diff* diff) {
    std::vector<FileRecord> files;
    const std::size_t count = ::git_diff_num_deltas(diff);
    files.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const git_diff_delta* delta = ::git_diff_get_delta(diff, i);
        files.push_back({delta->old_file.path, delta->status});
    }
    return files;
}

std::vector<FileRecord> filesChangedBy(git_repository* repository, const git_commit* commit) {
    Tree parentTree;
    if (::git_commit_parentcount(commit) > 0) {
        parentTree = treeOf(made<Commit>(::git_commit_parent, commit, 0U).get());
    }
    const Diff diff = made<Diff>(::git_diff_tree_to_tree, repository, parentTree.get(),
                                 treeOf(commit).get(), nullptr);
    git_diff_find_options options = GIT_DIFF_FIND_OPTIONS_INIT;
    options.flags = GIT_DIFF_FIND_RENAMES;
    check(::git_diff_find_similar(diff.get(), &options));
    return filesOf(diff.get());
}

std::size_t countCommits(const std::string& path, bool withFiles) {
    const Repository repository = open(path);
    const Walk walk = made<Walk>(::git_revwalk_new, repository.get());
    check(::git_revwalk_sorting(walk.get(), GIT_SORT_TIME));
    check(::git_revwalk_push_head(walk.get()));
    std::vector<CommitRecord> records;
    git_oid id;
    while (::git_revwalk_next(&id, walk.get()) == 0) {
        const Commit commit = made<Commit>(::git_commit_lookup, repository.get(), &id);
        const git_signature* author = ::git_commit_author(commit.get());
        records.push_back({shortName(id),
                           author->name,
                           author->email,
                           ::git_commit_message(commit.get()),
                           author->when.time,
                           {}});
        if (withFiles) {
            records.back().files = filesChangedBy(repository.get(), commit.get());
        }
    }
    return records.size();
}

}  // namespace

void startLibGit2() {
    check(::git_libgit2_init());
    for (const int level :
         {GIT_CONFIG_LEVEL_SYSTEM, GIT_CONFIG_LEVEL_XDG, GIT_CONFIG_LEVEL_GLOBAL}) {
        check(::git_libgit2_opts(GIT_OPT_SET_SEARCH_PATH, level, ""));
    }
}

std::string libgit2Version() {
    int major = 0;
    int minor = 0;
    int revision = 0;
    ::git_libgit2_version(&major, &minor, &revision);
    return std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(revision);
}

std::size_t libgit2Log(const std::string& path) {
    return countCommits(path, false);
}

std::size_t libgit2LogWithFiles(const std::string& path) {
    return countCommits(path, true);
}

std::size_t libgit2Status(const std::string& path) {
    const Repository repository = open(path);
    git_status_options options = GIT_STATUS_OPTIONS_INIT;
    options.show = GIT_STATUS_SHOW_INDEX_AND_WORKDIR;
    options.flags = GIT_STATUS_OPT_INCLUDE_UNTRACKED | GIT_STATUS_OPT_RENAMES_HEAD_TO_INDEX;
    const StatusList list = made<StatusList>(::git_status_list_new, repository.get(), &options);
    std::vector<FileRecord> records;
    const std::size_t count = ::git_status_list_entrycount(list.get());
    records.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const git_status_entry* entry = ::git_status_byindex(list.get(), i);
        const git_diff_delta* delta =
            entry->index_to_workdir != nullptr ? entry->index_to_workdir : entry->head_to_index;
        records.push_back({path + "/" + delta->new_file.path, static_cast<int>(entry->status)});
    }
    return records.size();
}

std::size_t libgit2Blame(const std::string& path) {
    struct LineRecord {
        std::string revision, author;
        git_time_t date;
        std::size_t line;
    };
    const Repository repository = open(path);
    git_blame_options options = GIT_BLAME_OPTIONS_INIT;
    options.flags = GIT_BLAME_USE_MAILMAP;
    const Blame blame = made<Blame>(::git_blame_file, repository.get(), "lines.txt", &options);
    std::vector<LineRecord> records;
    for (std::uint32_t i = 0; i < ::git_blame_get_hunk_count(blame.get()); ++i) {
        const git_blame_hunk* hunk = ::git_blame_get_hunk_byindex(blame.get(), i);
        for (std::size_t line = 0; line < hunk->lines_in_hunk; ++line) {
            records.push_back({shortName(hunk->final_commit_id), hunk->final_signature->name,
                               hunk->final_signature->when.time,
                               hunk->final_start_line_number + line});
        }
    }
    return records.size();
}

std::size_t libgit2Diff(const std::string& path) {
    const Repository repository = open(path);
    const auto treeNamed = [&repository](const char* name) {
        const Object object = made<Object>(::git_revparse_single, repository.get(), name);
        return Tree(reinterpret_cast<git_tree*>(
            made<Object>(::git_object_peel, object.get(), GIT_OBJECT_TREE).release()));
    };
    const Diff diff = made<Diff>(::git_diff_tree_to_tree, repository.get(),
                                 treeNamed("HEAD~1").get(), treeNamed("HEAD").get(), nullptr);
    git_buf bytes = GIT_BUF_INIT;
    const Buffer released(&bytes);
    check(::git_diff_to_buf(&bytes, diff.get(), GIT_DIFF_FORMAT_PATCH));
    const std::string content(bytes.ptr, bytes.size);
    return content.empty() ? 0 : 1;
}

std::size_t libgit2DiffNames(const std::string& path) {
    const Repository repository = open(path);
    const Object head = made<Object>(::git_revparse_single, repository.get(), "HEAD^{tree}");
    const Diff diff = made<Diff>(::git_diff_tree_to_workdir_with_index, repository.get(),
                                 reinterpret_cast<git_tree*>(head.get()), nullptr);
    return filesOf(diff.get()).size();
}

std::size_t libgit2List(const std::string& path) {
    struct EntryRecord {
        std::string name;
        bool isLeaf;
    };
    const Repository repository = open(path);
    const Object folder = made<Object>(::git_revparse_single, repository.get(), "HEAD:entries");
    const auto* tree = reinterpret_cast<const git_tree*>(folder.get());
    std::vector<EntryRecord> records;
    for (std::size_t i = 0; i < ::git_tree_entrycount(tree); ++i) {
        const git_tree_entry* entry = ::git_tree_entry_byindex(tree, i);
        records.push_back(
            {::git_tree_entry_name(entry), ::git_tree_entry_type(entry) == GIT_OBJECT_BLOB});
    }
    return records.size();
}

std::size_t libgit2State(const std::string& path) {
    struct EntryRecord {
        std::string path, headID, indexID;
        std::uint16_t headMode, indexMode, workingTreeMode;
        int status;
    };
    const Repository repository = open(path);
    const Reference head = made<Reference>(::git_repository_head, repository.get());
    std::vector<EntryRecord> records{{::git_reference_name(head.get()),
                                      fullName(*::git_reference_target(head.get())), "", 0, 0, 0,
                                      0}};
    git_status_options options = GIT_STATUS_OPTIONS_INIT;
    options.show = GIT_STATUS_SHOW_INDEX_AND_WORKDIR;
    options.flags = GIT_STATUS_OPT_INCLUDE_UNTRACKED | GIT_STATUS_OPT_RENAMES_HEAD_TO_INDEX;
    const StatusList list = made<StatusList>(::git_status_list_new, repository.get(), &options);
    for (std::size_t i = 0; i < ::git_status_list_entrycount(list.get()); ++i) {
        const git_status_entry* entry = ::git_status_byindex(list.get(), i);
        const git_diff_delta* delta =
            entry->index_to_workdir != nullptr ? entry->index_to_workdir : entry->head_to_index;
        records.push_back({delta->new_file.path, fullName(delta->old_file.id),
                           fullName(delta->old_file.id), delta->old_file.mode, delta->old_file.mode,
                           delta->new_file.mode, static_cast<int>(entry->status)});
    }
    return records.size();
}

std::size_t libgit2History(const std::string& path) {
    struct HistoryRecord {
        std::string id, author, authorEmail, committer, committerEmail, subject, body;
        std::vector<std::string> parents, references;
        git_time authorTime, committerTime;
    };
    const Repository repository = open(path);
    const auto references = referencesByID(repository.get());
    const Walk walk = made<Walk>(::git_revwalk_new, repository.get());
    check(::git_revwalk_sorting(walk.get(), GIT_SORT_TIME));
    check(::git_revwalk_push_head(walk.get()));
    std::vector<HistoryRecord> records;
    git_oid id;
    while (::git_revwalk_next(&id, walk.get()) == 0) {
        const Commit commit = made<Commit>(::git_commit_lookup, repository.get(), &id);
        const git_signature* author = ::git_commit_author(commit.get());
        const git_signature* committer = ::git_commit_committer(commit.get());
        const char* body = ::git_commit_body(commit.get());
        records.push_back({fullName(id),
                           author->name,
                           author->email,
                           committer->name,
                           committer->email,
                           ::git_commit_summary(commit.get()),
                           body != nullptr ? body : "",
                           {},
                           {},
                           author->when,
                           committer->when});
        for (unsigned int i = 0; i < ::git_commit_parentcount(commit.get()); ++i) {
            records.back().parents.push_back(fullName(*::git_commit_parent_id(commit.get(), i)));
        }
        if (const auto found = references.find(records.back().id); found != references.end()) {
            records.back().references = found->second;
        }
    }
    return records.size();
}

std::size_t libgit2Annotation(const std::string& path) {
    struct GroupRecord {
        std::string id, author, email, path, subject;
        git_time time;
        std::size_t firstLine, lineCount, originalLine;
    };
    const Repository repository = open(path);
    git_blame_options options = GIT_BLAME_OPTIONS_INIT;
    options.flags = GIT_BLAME_USE_MAILMAP;
    const Blame blame = made<Blame>(::git_blame_file, repository.get(), "lines.txt", &options);
    std::vector<GroupRecord> records;
    for (std::uint32_t i = 0; i < ::git_blame_get_hunk_count(blame.get()); ++i) {
        const git_blame_hunk* hunk = ::git_blame_get_hunk_byindex(blame.get(), i);
        const Commit commit =
            made<Commit>(::git_commit_lookup, repository.get(), &hunk->final_commit_id);
        const git_signature* author = hunk->final_signature;
        records.push_back({fullName(hunk->final_commit_id), author->name, author->email,
                           hunk->orig_path, ::git_commit_summary(commit.get()), author->when,
                           hunk->final_start_line_number, hunk->lines_in_hunk,
                           hunk->orig_start_line_number});
    }
    return records.size();
}

std::size_t libgit2CurrentBranch(const std::string& path) {
    const Repository repository = open(path);
    const Reference head = made<Reference>(::git_repository_head, repository.get());
    return std::string(::git_reference_shorthand(head.get())).empty() ? 0 : 1;
}

std::size_t libgit2ConfigValue(const std::string& path) {
    const Repository repository = open(path);
    const Config config = made<Config>(::git_repository_config_snapshot, repository.get());
    const char* value = nullptr;
    check(::git_config_get_string(&value, config.get(), "remote.origin.url"));
    return std::string(value).empty() ? 0 : 1;
}

std::size_t libgit2MergeBase(const std::string& path) {
    const Repository repository = open(path);
    git_oid main;
    git_oid topic;
    git_oid base;
    check(::git_reference_name_to_id(&main, repository.get(), "refs/heads/main"));
    check(::git_reference_name_to_id(&topic, repository.get(), "refs/heads/topic"));
    check(::git_merge_base(&base, repository.get(), &main, &topic));
    return shortName(base).empty() ? 0 : 1;
}

}  // namespace neb::benchmarks
