;;; nebgit-mode-line.el --- Branch and changes in the mode line  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; The state of each working copy is read once, and again when it changes; drawing the mode line
;; only looks it up.

;;; Code:

(require 'nebgit-changes)

(defvar nebgit-mode-line--branches (make-hash-table :test #'equal)
  "Texts about the branch, by working copy; t while the first one is read.")

(defvar-local nebgit-mode-line--root 'unknown
  "Working copy of this buffer.")

(defun nebgit-mode-line ()
  "Return the branch and the numbers of changed lines for the mode line."
  (when (eq nebgit-mode-line--root 'unknown)
    (setq nebgit-mode-line--root (nebgit-root)))
  (let* ((root nebgit-mode-line--root)
         (branch (and root (gethash root nebgit-mode-line--branches))))
    (when (and root (not branch))
      (puthash root t nebgit-mode-line--branches)
      (nebgit-mode-line--read root))
    (concat (when (stringp branch) (concat " " branch))
            (nebgit-mode-line--counts))))

(defun nebgit-mode-line--counts ()
  "Return the numbers of lines that were added, modified and deleted, as text."
  (pcase-let ((`(,added ,modified ,deleted) (nebgit-changes-counts)))
    (concat (when (> added 0) (format " +%d" added))
            (when (> modified 0) (format " ~%d" modified))
            (when (> deleted 0) (format " -%d" deleted)))))

(defun nebgit-mode-line--read (root)
  "Read the branch of ROOT."
  (nebgit-perform
   (nebgit-request 'state root :UntrackedFiles "no" :background t)
   :success (lambda (records _)
              (puthash root (nebgit-mode-line--branch (car records)) nebgit-mode-line--branches)
              (force-mode-line-update t))
   :failure (lambda (&rest _) (puthash root "" nebgit-mode-line--branches))))

(defun nebgit-mode-line--branch (head)
  "Return the text about HEAD, the first record of type 1000."
  (let ((ahead (or (nebgit-field head Ahead) 0))
        (behind (or (nebgit-field head Behind) 0)))
    (concat (replace-regexp-in-string
             "%" "%%"
             (nebgit-printable (or (nebgit-name head Name)
                                   (substring (or (nebgit-field head ObjectID) "detached") 0 8))))
            (when (> ahead 0) (format "↑%d" ahead))
            (when (> behind 0) (format "↓%d" behind)))))

(defun nebgit-mode-line--changed (root &optional what)
  "Read the branch of ROOT again, if it is shown and in WHAT."
  (when (and (gethash root nebgit-mode-line--branches)
             (or (not what) (seq-intersection what '("head" "references" "configuration"))))
    (nebgit-mode-line--read root)))

(add-hook 'nebgit-changed-hook #'nebgit-mode-line--changed)

(provide 'nebgit-mode-line)
;;; nebgit-mode-line.el ends here
