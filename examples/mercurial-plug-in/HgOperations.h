// HgOperations.h - the operations of the plug-in. docs/requests.md of NEBGit describes what a
// request of each type has and what it returns.
#pragma once

#include <set>
#include <string>

#include "HgOperation.h"

// ---- HgReading.cpp ----------------------------------------------------------------------------

class HgStatusOperation final : public HgOperation {
public:
    explicit HgStatusOperation(std::shared_ptr<NEBSourceControlRequest> request);
    [[nodiscard]] std::string className() const override { return "HgStatusOperation"; }

protected:
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
};

class HgLogOperation final : public HgOperation {
public:
    explicit HgLogOperation(std::shared_ptr<NEBSourceControlRequest> request);
    [[nodiscard]] std::string className() const override { return "HgLogOperation"; }

protected:
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
};

class HgBlameOperation final : public HgOperation {
public:
    explicit HgBlameOperation(std::shared_ptr<NEBSourceControlRequest> request);
    [[nodiscard]] std::string className() const override { return "HgBlameOperation"; }

protected:
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
};

class HgDiffOperation final : public HgOperation {
public:
    explicit HgDiffOperation(std::shared_ptr<NEBSourceControlRequest> request);
    [[nodiscard]] std::string className() const override { return "HgDiffOperation"; }

protected:
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
    void readOutput(const Data& output) override;

private:
    const bool _isNamesOnly;
};

class HgInfoOperation final : public HgOperation {
public:
    explicit HgInfoOperation(std::shared_ptr<NEBSourceControlRequest> request);
    [[nodiscard]] std::string className() const override { return "HgInfoOperation"; }

protected:
    void readOutput(const Data& output) override;
};

class HgListBranchesOperation final : public HgOperation {
public:
    explicit HgListBranchesOperation(std::shared_ptr<NEBSourceControlRequest> request);
    [[nodiscard]] std::string className() const override { return "HgListBranchesOperation"; }

protected:
    [[nodiscard]] std::unique_ptr<NEBSourceControlRecordParser> makeRecordParser() override;
};

class HgCurrentBranchOperation final : public HgOperation {
public:
    explicit HgCurrentBranchOperation(std::shared_ptr<NEBSourceControlRequest> request);
    [[nodiscard]] std::string className() const override { return "HgCurrentBranchOperation"; }

protected:
    void readOutput(const Data& output) override;
};

class HgContentOperation final : public HgOperation {
public:
    explicit HgContentOperation(std::shared_ptr<NEBSourceControlRequest> request);
    [[nodiscard]] std::string className() const override { return "HgContentOperation"; }

protected:
    void readOutput(const Data& output) override;
};

// ---- HgChanging.cpp ---------------------------------------------------------------------------

class HgAddOperation final : public HgOperation {
public:
    explicit HgAddOperation(std::shared_ptr<NEBSourceControlRequest> request);
    [[nodiscard]] std::string className() const override { return "HgAddOperation"; }
};

class HgRemoveOperation final : public HgOperation {
public:
    explicit HgRemoveOperation(std::shared_ptr<NEBSourceControlRequest> request);
    [[nodiscard]] std::string className() const override { return "HgRemoveOperation"; }
};

class HgCommitOperation final : public HgOperation {
public:
    explicit HgCommitOperation(std::shared_ptr<NEBSourceControlRequest> request);
    [[nodiscard]] std::string className() const override { return "HgCommitOperation"; }

protected:
    void readOutput(const Data& output) override;
};
