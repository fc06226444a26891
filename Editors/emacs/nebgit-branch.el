;;; nebgit-branch.el --- Branches and clones  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; The names to choose from are read from the server before the question is asked.

;;; Code:

(require 'nebgit-act)

(defun nebgit--short-name (name)
  "Return the reference NAME without its first two parts."
  (replace-regexp-in-string "\\`refs/\\(heads\\|remotes\\|tags\\)/" "" name))

(defun nebgit-with-references (prefixes prompt function &optional current)
  "Ask with PROMPT for a reference below one of PREFIXES.
Call FUNCTION with its short name and its full name; nil for a revision that
was typed.  CURRENT also offers the current branch."
  (nebgit-perform
   (nebgit-request 'references (nebgit-need-root))
   :success
   (lambda (records _)
     (let (names)
       (dolist (record records)
         (let ((name (nebgit-name record Name)))
           (when (and (cl-some (lambda (prefix) (string-prefix-p prefix name)) prefixes)
                      (or current (not (nebgit-field record IsCurrent)))
                      (not (nebgit-field record SymbolicTarget)))
             (push (cons (nebgit--short-name name) name) names))))
       (nebgit--ask-reference prompt (nreverse names) default-directory function)))))

(defun nebgit--ask-reference (prompt names folder function)
  "Ask with PROMPT for one of NAMES; call FUNCTION with it in FOLDER."
  (nebgit-later
   (lambda ()
     (let ((default-directory folder)
           (name (completing-read prompt names)))
       (unless (string-empty-p name)
         (funcall function name (cdr (assoc name names))))))))

(defun nebgit--in (folder function)
  "Return FUNCTION with FOLDER as its `default-directory'."
  (lambda (&rest arguments)
    (let ((default-directory folder))
      (apply function arguments))))

(defun nebgit-switch ()
  "Switch to a branch, tag or commit.
A remote branch becomes a local branch that follows it."
  (interactive)
  (let ((root (nebgit-need-root)))
    (nebgit-with-references
     '("refs/heads/" "refs/remotes/" "refs/tags/") "Switch to: "
     (nebgit--in root (lambda (name full)
                        (nebgit-act 'checkout (list :destination (nebgit--local-name name full))
                                    (format "switch to %s" name)))))))

(defun nebgit--local-name (name full)
  "Return NAME, or that of the local branch of a remote branch FULL."
  (if (string-prefix-p "refs/remotes/" (or full ""))
      (replace-regexp-in-string "\\`[^/]+/" "" name)
    name))

(defun nebgit-create-branch (name &optional start)
  "Create the branch NAME at START, by default HEAD, and switch to it."
  (interactive "sNew branch: ")
  (let ((root (nebgit-need-root)))
    (nebgit-perform
     (nebgit-request 'create-branch root :destination name :SourceLocation start)
     :success (nebgit--in root (lambda (&rest _)
                                 (nebgit-act 'checkout (list :destination name)
                                             (format "switch to %s" name)))))))

(defun nebgit-delete-branch ()
  "Delete a branch; ask again if its commits are not merged."
  (interactive)
  (let ((root (nebgit-need-root)))
    (nebgit-with-references '("refs/heads/") "Delete the branch: "
                            (lambda (name _) (nebgit--delete-branch root name nil)))))

(defun nebgit--delete-branch (root name force)
  "Delete the branch NAME of ROOT, with FORCE also if it is not merged."
  (nebgit-perform
   (nebgit-request 'delete-branch root :destination name :Force force)
   :success (lambda (&rest _) (message "NEBGit: branch %s deleted" name))
   :failure (lambda (problem outcome)
              (if (equal (nebgit-error-class problem) "branch-not-merged")
                  (nebgit-later
                   (lambda ()
                     (when (yes-or-no-p (format "%s is not merged; lose its commits? " name))
                       (nebgit--delete-branch root name t))))
                (nebgit-show-error problem outcome)))))

(defun nebgit--integrate (strategy prompt)
  "Ask with PROMPT for a branch, and integrate it by STRATEGY."
  (let ((root (nebgit-need-root)))
    (nebgit-with-references
     '("refs/heads/" "refs/remotes/" "refs/tags/") prompt
     (nebgit--in root (lambda (name _)
                        (nebgit-act 'integrate (list :destination name :Strategy strategy)
                                    (format "%s of %s" strategy name)
                                    #'nebgit-show-head-change))))))

(defun nebgit-merge ()
  "Merge a branch into the current one; stop at conflicts."
  (interactive)
  (nebgit--integrate "merge" "Merge: "))

(defun nebgit-rebase ()
  "Move the commits of the current branch onto another one; stop at conflicts."
  (interactive)
  (nebgit--integrate "rebase" "Rebase onto: "))

;;;###autoload (autoload 'nebgit-clone "nebgit" nil t)
(defun nebgit-clone (location folder)
  "Clone the repository at LOCATION into FOLDER, and show its status."
  (interactive "sClone the repository at: \nGInto the folder: ")
  (let ((folder (directory-file-name (expand-file-name folder)))
        (source (list :class "NEBSourceControlRepository" :location (nebgit-encode location)
                      :reachable t)))
    (nebgit-perform
     (append (nebgit-request 'clone nil :destination folder :repositoryToAuthenticate source)
             (list :sourceTree source))
     :title "clone"
     :success (lambda (&rest _)
                (message "NEBGit: cloned into %s" folder)
                (nebgit-later (lambda () (nebgit-status folder)))))))

(declare-function nebgit-status "nebgit")

(provide 'nebgit-branch)
;;; nebgit-branch.el ends here
