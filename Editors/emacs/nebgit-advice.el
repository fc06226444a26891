;;; nebgit-advice.el --- What to do in Emacs after an error  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; The server advises what to do in a terminal.  Where Emacs has a command for that, the advice
;; names its key.

;;; Code:

(defconst nebgit-advice--clean-tree
  "Commit the changes (\\[nebgit-commit-all] in the status), stash them \
(\\[nebgit-stash-push]), or discard them (\\[nebgit-discard])."
  "Advice if changes that are not committed block a command.")

(defconst nebgit-advice
  `(("credentials-needed" . "Try again and enter them, or set up a credential helper of git.")
    ("credentials-refused" . "Try again, or correct the stored credentials.  Many servers \
require an access token instead of a password.")
    ("remote-ahead" . "Pull (\\[nebgit-pull] in the status), then push again.")
    ("push-stale" . "Fetch (\\[nebgit-fetch] in the status), review the new commits, then \
push again.")
    ("no-upstream" . "Push the branch (\\[nebgit-push] in the status), which sets its upstream \
branch.")
    ("no-current-branch" . "Switch to a branch (\\[nebgit-switch] in the status), or create one \
(\\[nebgit-create-branch]).  Continue (\\[nebgit-continue]) or abort (\\[nebgit-abort]) an \
unfinished rebase first.")
    ("diverged" . "Merge the other branch (\\[nebgit-merge] in the status), or rebase onto it \
(\\[nebgit-rebase]).")
    ("local-changes" . ,nebgit-advice--clean-tree)
    ("needs-clean-tree" . ,nebgit-advice--clean-tree)
    ("untracked-in-the-way" . "Move the files away, or stage (\\[nebgit-stage] in the status) \
and commit them.")
    ("conflict" . "Resolve them in the files, and stage these (\\[nebgit-stage] in the status).  \
Then continue an unfinished merge or rebase (\\[nebgit-continue]), or abort it \
(\\[nebgit-abort]).")
    ("conflict-unresolved" . "Resolve them in the files, stage these (\\[nebgit-stage] in the \
status), then try again.")
    ("merge-unfinished" . "Continue (\\[nebgit-continue] in the status) or abort \
(\\[nebgit-abort]) it.")
    ("nothing-in-progress" . "The status shows what is unfinished.")
    ("nothing-to-commit" . "Stage changes (\\[nebgit-stage] in the status), or commit all tracked \
files (\\[nebgit-commit-all])."))
  "Advice by the class of the error, with commands of the status in place of keys.")

(defconst nebgit-advice-output-classes
  '("unknown" "local-hook-refused" "remote-hook-refused" "remote-refused" "remote-unsupported"
    "merge-failed" "submodule-failed" "repository-damaged" "configuration-broken" "io-error"
    "other-tools")
  "Classes of errors whose reason only the output of git, a hook or the remote has.")

(defun nebgit-advice (class)
  "Return what to do in Emacs after an error of CLASS, a string or nil; or nil."
  (let ((text (cdr (assoc class nebgit-advice))))
    (and text (substitute-command-keys (concat "\\<nebgit-status-mode-map>" text)))))

(provide 'nebgit-advice)
;;; nebgit-advice.el ends here
