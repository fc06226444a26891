;;; nebgit-log-act.el --- Commands of the log that change something  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; Applies, undoes or resets to the commit at point, and creates branches and tags there.

;;; Code:

(require 'nebgit-branch)
(require 'nebgit-log)

(defun nebgit-log--pick (action)
  "Do ACTION of type 1014 with the commit at point."
  (let ((commit (nebgit-log-commit)))
    (nebgit-act 'pick (list :from (nebgit-field commit ObjectID) :Action action
                            :Mainline (and (> (length (nebgit-field commit Parents)) 1) 1))
                action #'nebgit-show-head-change)))

(defun nebgit-log-cherry-pick ()
  "Apply the commit at point to the current branch."
  (interactive)
  (nebgit-log--pick "cherry-pick"))

(defun nebgit-log-revert ()
  "Undo the commit at point by a new commit."
  (interactive)
  (nebgit-log--pick "revert"))

(defun nebgit-log-reset (mode)
  "Move the current branch to the commit at point.
MODE is \"soft\", \"mixed\" or \"hard\"; ask before a hard reset loses work."
  (interactive (list (completing-read "Reset: " '("soft" "mixed" "hard") nil t nil nil "mixed")))
  (let ((root default-directory)
        (id (nebgit-log--id)))
    (nebgit-perform
     (nebgit-request 'pick root :from id :Action "reset" :ResetMode mode)
     :success #'nebgit-show-head-change
     :failure (lambda (problem outcome)
                (if (equal (nebgit-error-class problem) "local-changes")
                    (nebgit-later #'nebgit-log--reset-hard root id problem)
                  (nebgit-show-error problem outcome))))))

(defun nebgit-log--reset-hard (root id problem)
  "Ask whether the files that PROBLEM names may be lost, then reset ROOT to ID."
  (when (yes-or-no-p (format "Lose the changes of %s? "
                             (mapconcat #'nebgit-decode (plist-get problem :files) ", ")))
    (nebgit-perform
     (nebgit-request 'pick root :from id :Action "reset" :ResetMode "hard" :Force t)
     :success #'nebgit-show-head-change)))

(defun nebgit-log-create-branch (name)
  "Create the branch NAME at the commit at point, and switch to it."
  (interactive "sNew branch: ")
  (nebgit-create-branch name (nebgit-log--id)))

(defun nebgit-log-tag (name)
  "Create the tag NAME at the commit at point."
  (interactive "sNew tag: ")
  (nebgit-act 'tag (list :destination name :from (nebgit-log--id)) (format "tag %s" name)))

(provide 'nebgit-log-act)
;;; nebgit-log-act.el ends here
