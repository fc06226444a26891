;;; nebgit.el --- Git through the server of NEBGit  -*- lexical-binding: t; -*-

;; Copyright (c) 2026 the NEBGit authors
;; SPDX-License-Identifier: MIT

;; Author: The NEBGit authors
;; Version: 1.0
;; Package-Requires: ((emacs "27.1"))
;; Keywords: vc, tools
;; URL: https://git-scm.com/docs

;;; Commentary:

;; Status, log, blame, commits and marks beside changed lines, through "nebsc serve".  Emacs never
;; waits for git.  M-x nebgit-status starts; docs/editors.md of NEBGit lists the keys.

;;; Code:

(require 'nebgit-blame)
(require 'nebgit-credentials)
(require 'nebgit-hunk)
(require 'nebgit-log-act)
(require 'nebgit-log-follow)
(require 'nebgit-mode-line)
(require 'nebgit-watch)

(defcustom nebgit-revert-buffers t
  "Whether buffers without changes are read again after git changed their files."
  :type 'boolean
  :group 'nebgit)

(defvar nebgit-status-mode-map
  (let ((map (make-sparse-keymap)))
    (cl-loop for (keys command) in
             '(("s" nebgit-stage) ("u" nebgit-unstage) ("k" nebgit-discard)
               ("a" nebgit-stage-all) ("U" nebgit-unstage-all)
               ("RET" nebgit-status-visit) ("=" nebgit-status-toggle-diff)
               ("TAB" nebgit-status-toggle-diff)
               ("n" nebgit-status-next) ("p" nebgit-status-previous)
               ("c c" nebgit-commit) ("c a" nebgit-commit-amend) ("c A" nebgit-commit-all)
               ("P" nebgit-push) ("F" nebgit-pull) ("f" nebgit-fetch)
               ("z z" nebgit-stash-push) ("z p" nebgit-stash-pop) ("z a" nebgit-stash-apply)
               ("z k" nebgit-stash-drop)
               ("b b" nebgit-switch) ("b c" nebgit-create-branch) ("b k" nebgit-delete-branch)
               ("b m" nebgit-merge) ("b r" nebgit-rebase)
               ("l l" nebgit-log) ("l a" nebgit-log-all)
               ("C" nebgit-continue) ("S" nebgit-skip) ("A" nebgit-abort)
               ("g" nebgit-status-refresh))
             do (define-key map (kbd keys) command))
    map)
  "Keys of the status.")

(define-derived-mode nebgit-status-mode special-mode "NEBGit status"
  "Major mode of the window with the state of a working copy.
\\{nebgit-status-mode-map}"
  (setq truncate-lines t)
  (buffer-disable-undo)
  (setq-local revert-buffer-function (lambda (&rest _) (nebgit-status-refresh))))

;;;###autoload
(defun nebgit-status (&optional folder)
  "Show the state of the working copy of FOLDER, by default the current one.
On the command line of Emacs, as the argument of -f, that is the one of the file
that Emacs opens."
  (interactive)
  (if (and (not folder) (member (nebgit-status--option) '("-f" "-funcall" "-e")))
      ;; Emacs has not opened the files that follow, and would then show them only.
      (add-hook 'window-setup-hook #'nebgit-status--after-start)
    (nebgit-status--show folder)))

(defun nebgit-status--option ()
  "Return the option of the command line that Emacs carries out, or nil."
  (condition-case nil
      (symbol-value 'argi)
    (void-variable nil)))

(defun nebgit-status--after-start ()
  "Show the status after the start of Emacs, if it is possible."
  (condition-case problem
      (nebgit-status--show default-directory)
    (user-error (message "%s" (error-message-string problem)))))

(defun nebgit-status--show (folder)
  "Show the state of the working copy of FOLDER, or nil for the current one."
  (let* ((default-directory (file-name-as-directory (or folder default-directory)))
         (root (nebgit-need-root))
         (buffer (get-buffer-create (nebgit--status-name root))))
    (with-current-buffer buffer
      (unless (derived-mode-p 'nebgit-status-mode)
        (nebgit-status-mode)
        (setq default-directory root)
        (nebgit-watch-buffer root))
      (nebgit-status-refresh))
    (pop-to-buffer buffer)))

(defun nebgit--status-name (root)
  "Return the name of the buffer with the status of ROOT."
  (format "*nebgit: %s*" (abbreviate-file-name (directory-file-name root))))

(defun nebgit-status-visit ()
  "Visit the file at point, in a diff at its line."
  (interactive)
  (let* ((item (nebgit-status-item))
         (path (plist-get item :path)))
    (when (plist-get item :rest)
      (user-error "Press = to show more entries"))
    (unless (and path (not (eq (plist-get item :section) 'stash)))
      (user-error "This line has no file"))
    (find-file-other-window (expand-file-name path))
    (when (plist-get item :hunk)
      (goto-char (point-min))
      (forward-line (1- (nebgit--new-line (plist-get item :hunk) (plist-get item :line)))))))

(defun nebgit--new-line (hunk line)
  "Return the number in the new file of LINE, an index in HUNK from 1 or nil."
  (+ (nebgit-field hunk NewStart)
     (cl-count-if-not (lambda (text) (memq (aref text 0) '(?- ?\\)))
                      (seq-take (nebgit-diff-lines hunk) (1- (or line 1))))))

(defun nebgit-status-next (&optional backward)
  "Go to the next entry, or with BACKWARD to the previous one."
  (interactive)
  (let ((start (point)) found)
    (while (and (not found) (zerop (forward-line (if backward -1 1))) (not (eobp)))
      (setq found (get-text-property (point) 'nebgit-item)))
    (unless found (goto-char start))))

(defun nebgit-status-previous ()
  "Go to the previous entry."
  (interactive)
  (nebgit-status-next t))

;;; Refreshing

(defun nebgit--changed (root &optional _changes)
  "Show the state of ROOT again, where it is shown, and read its files again."
  (let ((buffer (get-buffer (nebgit--status-name root))))
    (when buffer
      (with-current-buffer buffer (nebgit-status-refresh))))
  (when nebgit-revert-buffers
    (nebgit--revert-buffers root)))

(defun nebgit--revert-buffers (root)
  "Read the files below ROOT again that have changed, if their buffers have not."
  (dolist (buffer (buffer-list))
    (let ((file (buffer-file-name buffer)))
      (when (and file (string-prefix-p root file) (not (buffer-modified-p buffer))
                 (not (verify-visited-file-modtime buffer)) (file-exists-p file))
        (with-current-buffer buffer
          (revert-buffer t t t))))))

(defun nebgit--after-save ()
  "Show the state again after a file was saved."
  (let* ((root (nebgit-root))
         (buffer (and root (get-buffer (nebgit--status-name root)))))
    (when buffer
      (with-current-buffer buffer (nebgit-status-refresh)))))

(add-hook 'nebgit-changed-hook #'nebgit--changed)
(add-hook 'after-save-hook #'nebgit--after-save)

(provide 'nebgit)
;;; nebgit.el ends here
