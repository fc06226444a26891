;;; nebgit-commit.el --- Buffer for the message of a commit  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; The message is kept until the commit succeeds, and in a ring if it is given up.

;;; Code:

(require 'nebgit-act)
(require 'ring)

(defvar nebgit-commit-ring (make-ring 20)
  "Messages of commits that succeeded or were given up.")

(defvar-local nebgit-commit--options nil
  "Options of the commit, a plist such as (:Amend t).")

(defvar-local nebgit-commit--task nil
  "Task of the running commit.")

(defvar-local nebgit-commit--recalled -1
  "Index in `nebgit-commit-ring' of the message that was recalled last.")

(defvar nebgit-commit-mode-map
  (let ((map (make-sparse-keymap)))
    (define-key map (kbd "C-c C-c") #'nebgit-commit-finish)
    (define-key map (kbd "C-c C-k") #'nebgit-commit-give-up)
    (define-key map (kbd "C-c C-s") #'nebgit-commit-toggle-sign-off)
    (define-key map (kbd "M-p") #'nebgit-commit-recall)
    map)
  "Keys of the buffer for the message of a commit.")

(define-derived-mode nebgit-commit-mode text-mode "Commit message"
  "Major mode to write the message of a commit.
\\{nebgit-commit-mode-map}"
  (setq fill-column 72)
  (setq-local require-final-newline nil)
  (auto-fill-mode 1))

(defun nebgit-commit ()
  "Write a message, and commit what is staged."
  (interactive)
  (nebgit-commit--edit nil))

(defun nebgit-commit-all ()
  "Write a message, and commit all tracked files."
  (interactive)
  (nebgit-commit--edit '(:All t)))

(defun nebgit-commit-amend ()
  "Edit the message of the last commit, and replace it with what is staged."
  (interactive)
  (let* ((root (nebgit-need-root))
         (buffer (nebgit-commit--edit '(:Amend t))))
    (nebgit-perform
     (nebgit-request 'history root :LogOutputLimit 1)
     :success (lambda (records _)
                (when (and (buffer-live-p buffer) (zerop (buffer-size buffer)))
                  (with-current-buffer buffer
                    (insert (nebgit-message-of (car records)))
                    (goto-char (point-min))
                    (set-buffer-modified-p nil)))))))

(defun nebgit-message-of (commit)
  "Return the message of COMMIT, a record of type 1001."
  (let ((body (nebgit-decode (or (nebgit-field commit Body) ""))))
    (concat (nebgit-decode (or (nebgit-field commit Subject) ""))
            (unless (string-empty-p body) (concat "\n\n" body)))))

(defun nebgit-commit--edit (options)
  "Show the buffer for the message of a commit with OPTIONS, and return it."
  (let* ((root (nebgit-need-root))
         (buffer (get-buffer-create (format "*nebgit commit: %s*" (directory-file-name root)))))
    (with-current-buffer buffer
      (unless (derived-mode-p 'nebgit-commit-mode)
        (nebgit-commit-mode)
        (setq default-directory root))
      (setq nebgit-commit--options options)
      (nebgit-commit--show-options))
    (pop-to-buffer buffer)
    buffer))

(defun nebgit-commit--show-options ()
  "Show the options and keys in the first line of the window."
  (setq header-line-format
        (concat (cond ((plist-get nebgit-commit--options :Amend) "Amend the last commit")
                      ((plist-get nebgit-commit--options :All) "Commit all changes")
                      (t "Commit what is staged"))
                (when (plist-get nebgit-commit--options :SignOff) ", signed off")
                (substitute-command-keys
                 ": \\[nebgit-commit-finish] commits, \\[nebgit-commit-give-up] gives up")))
  (force-mode-line-update))

(defun nebgit-commit-toggle-sign-off ()
  "Add the name of the committer at the end of the message, or do not."
  (interactive)
  (setq nebgit-commit--options
        (plist-put (copy-sequence nebgit-commit--options) :SignOff
                   (not (plist-get nebgit-commit--options :SignOff))))
  (nebgit-commit--show-options))

(defun nebgit-commit-recall ()
  "Replace the text with an earlier message; repeat for older ones."
  (interactive)
  (when (ring-empty-p nebgit-commit-ring)
    (user-error "No earlier message"))
  (setq nebgit-commit--recalled (if (eq last-command this-command)
                                    (1+ nebgit-commit--recalled)
                                  0))
  (delete-region (point-min) (point-max))
  (insert (ring-ref nebgit-commit-ring nebgit-commit--recalled)))

(defun nebgit-commit--message ()
  "Return the message in the buffer; nil if it is blank."
  (let ((text (buffer-substring-no-properties (point-min) (point-max))))
    (and (string-match-p "[^[:space:]]" text) text)))

(defun nebgit-commit-give-up ()
  "Do not commit.  A commit that is running is cancelled."
  (interactive)
  (when nebgit-commit--task
    (nebgit-cancel-task nebgit-commit--task))
  (let ((text (nebgit-commit--message)))
    (when text (ring-insert nebgit-commit-ring text)))
  (quit-window t))

(defun nebgit-commit-finish ()
  "Commit with the message in the buffer.
Without a message, git takes that of the amended commit or of the merge."
  (interactive)
  (when nebgit-commit--task
    (user-error "The commit is running"))
  (let ((buffer (current-buffer))
        (text (nebgit-commit--message)))
    (setq nebgit-commit--task
          (nebgit-perform
           (apply #'nebgit-request 'commit default-directory :Message text nebgit-commit--options)
           :title "commit"
           :success (lambda (records _) (nebgit-commit--finished buffer text (car records)))
           :failure (lambda (problem outcome)
                      (when (buffer-live-p buffer)
                        (with-current-buffer buffer (setq nebgit-commit--task nil)))
                      (nebgit-show-error problem outcome))))))

(defun nebgit-commit--finished (buffer text record)
  "Close BUFFER after the commit with the message TEXT and the RECORD."
  (when text (ring-insert nebgit-commit-ring text))
  (when (buffer-live-p buffer)
    (with-current-buffer buffer
      (setq nebgit-commit--task nil)
      (set-buffer-modified-p nil)
      (let ((window (get-buffer-window buffer)))
        (if window (quit-window t window) (kill-buffer buffer)))))
  (message "NEBGit: committed %s" (substring (nebgit-field record ObjectID) 0 10)))

(provide 'nebgit-commit)
;;; nebgit-commit.el ends here
