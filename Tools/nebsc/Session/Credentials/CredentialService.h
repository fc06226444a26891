// CredentialService.h - lets git and ssh ask nebsc for passwords (GIT_ASKPASS in gitcredentials(7),
// SSH_ASKPASS in ssh(1)).
//
// git starts nebsc again, under the name of a link in a private folder. That process (see
// AskpassProgram.h) sends the prompt through a socket in the same folder, and prints the answer.
//
//     CredentialService service([](const CredentialQuestion& question, int end) { … });
//     const auto grant = service.grant();
//     operation.setChildVariables(grant->variables());
//     operation.start();
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "Platform/FileDescriptor.h"
#include "Platform/Mutex.h"
#include "Platform/OperationQueue.h"
#include "Platform/Wake.h"
#include "Session/Credentials/CredentialQuestion.h"

namespace neb::nebsc {

/// Passes questions of the children that have a grant to a function, and its answers back. Only
/// processes of the same user that know the token of a grant get answers. Nothing is kept.
/// Thread-safe.
class CredentialService {
public:
    /// Returns the answer, without a line end; absent if the question is declined. Called on any
    /// thread, also several at a time. Must return soon after `end` becomes readable: the process
    /// that asks is gone, or its grant has ended.
    using Ask = std::function<std::optional<std::string>(const CredentialQuestion& question,
                                                         const std::string& context, int end)>;

    /// Who is asked if the user has set an askpass program for git with core.askPass. Credential
    /// helpers and the agent of ssh are always asked before.
    enum class Precedence { afterUsersPrograms, beforeUsersPrograms };

    explicit CredentialService(Ask ask) : _ask(std::move(ask)) {}
    CredentialService(const CredentialService&) = delete;
    CredentialService& operator=(const CredentialService&) = delete;
    /// Removes socket and folder, and waits until no question is open. All grants must be destroyed
    /// before.
    ~CredentialService();

    /// The permission to ask, for the children of one operation, during the lifetime of the object.
    class Grant {
    public:
        Grant(CredentialService& service, std::string token)
            : _service(service), _token(std::move(token)) {}
        Grant(const Grant&) = delete;
        Grant& operator=(const Grant&) = delete;
        /// Ends open questions.
        ~Grant() { _service.revoke(_token); }

        /// Returns the environment variables for the children, each "NAME=value".
        [[nodiscard]] std::vector<std::string> variables(Precedence precedence) const;

    private:
        CredentialService& _service;
        const std::string _token;
    };

    /// Returns a new grant; `context` is passed to the function that answers. Null if the system
    /// refuses a socket: then git gets no answers.
    [[nodiscard]] std::shared_ptr<const Grant> grant(std::string context = {});

private:
    struct Holder {
        std::string context;
        std::set<int> connections;
    };
    class Connection;

    /// Creates folder, link and socket. Returns whether they exist.
    bool open() NEB_REQUIRES(_mutex);
    void accept();
    void answer(int connection);
    void revoke(const std::string& token);
    /// Returns the context of the grant and notes the connection; absent if the token is unknown.
    [[nodiscard]] std::optional<std::string> enter(const std::string& token, int connection);
    void leave(const std::string& token, int connection);

    const Ask _ask;
    Mutex _mutex;
    std::string _folder NEB_GUARDED_BY(_mutex);
    FileDescriptor _listener;
    std::map<std::string, Holder> _holders NEB_GUARDED_BY(_mutex);  // by token
    Wake _end;
    std::thread _thread;
    std::optional<OperationQueue> _queue;
};

}  // namespace neb::nebsc
