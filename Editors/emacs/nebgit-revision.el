;;; nebgit-revision.el --- Message and diff of a commit  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; Shows a commit in a mode of its own that is based on `diff-mode'.

;;; Code:

(require 'nebgit-commit)

(defconst nebgit--empty-trees
  '((40 . "4b825dc642cb6eb9a060e54bf8d69288fbee4904")
    (64 . "6ef19b41225c5369f1c104d45d8d85efa9b057b53b14b4b9b939dd74decc5321"))
  "Ids of the empty tree, by the length of ids.")

(defvar-local nebgit-revision--id nil
  "Full id of the commit that the buffer shows.")

(defvar nebgit-revision-mode-map
  (let ((map (make-sparse-keymap)))
    (define-key map (kbd "q") #'quit-window)
    (define-key map (kbd "n") #'diff-hunk-next)
    (define-key map (kbd "p") #'diff-hunk-prev)
    (define-key map (kbd "RET") #'nebgit-revision-visit)
    (define-key map (kbd "P") #'nebgit-revision-parent)
    (define-key map (kbd "SPC") #'scroll-up-command)
    (define-key map (kbd "DEL") #'scroll-down-command)
    map)
  "Keys of the window with a commit.")

(define-derived-mode nebgit-revision-mode diff-mode "NEBGit commit"
  "Major mode of the window with the message and the diff of a commit.
\\{nebgit-revision-mode-map}"
  (setq buffer-read-only t)
  (buffer-disable-undo)
  (setq-local diff-refine nil))

(defun nebgit-date (time offset)
  "Return TIME, in seconds, as text in the zone with OFFSET in minutes."
  (format-time-string "%Y-%m-%d %H:%M" (or time 0) (* 60 (or offset 0))))

;;;###autoload (autoload 'nebgit-revision "nebgit" nil t)
(defun nebgit-revision (root revision)
  "Show the commit REVISION of ROOT; return its buffer."
  (interactive (list (nebgit-need-root) (read-string "Revision: " nil nil "HEAD")))
  (let ((buffer (get-buffer-create (format "*nebgit commit: %s %s*" (directory-file-name root)
                                           (nebgit-printable revision)))))
    (with-current-buffer buffer
      (unless (derived-mode-p 'nebgit-revision-mode)
        (nebgit-revision-mode))
      (setq default-directory root))
    (nebgit-perform
     (nebgit-request 'history root :from revision :LogOutputLimit 1)
     :success (lambda (records _) (nebgit-revision--read-diff buffer root (car records))))
    (display-buffer buffer)
    buffer))

(defun nebgit-revision--read-diff (buffer root commit)
  "Read the diff of COMMIT of ROOT, and show both in BUFFER."
  (let* ((id (nebgit-field commit ObjectID))
         (parents (nebgit-field commit Parents)))
    (nebgit-perform
     (nebgit-request 'changes root :to id
                     :from (if (> (length parents) 0)
                               (aref parents 0)
                             (alist-get (length id) nebgit--empty-trees)))
     :success (lambda (files _) (nebgit-revision--draw buffer commit files)))))

(defun nebgit-revision--draw (buffer commit files)
  "Show COMMIT with its changed FILES in BUFFER."
  (when (buffer-live-p buffer)
    (with-current-buffer buffer
      (with-silent-modifications
        (setq nebgit-revision--id (nebgit-field commit ObjectID))
        (erase-buffer)
        (insert (nebgit-revision--head commit) "\n"
                (replace-regexp-in-string "^\\(.\\)" "    \\1"
                                          (string-trim-right (nebgit-message-of commit)))
                "\n\n")
        (insert (nebgit-revision--summary files) "\n")
        (nebgit-diff-insert files)
        (goto-char (point-min))))))

(defun nebgit-revision--head (commit)
  "Return the lines about COMMIT before its message."
  (cl-flet ((line (title &rest parts)
              (concat title (mapconcat (lambda (part) (nebgit-decode (or part ""))) parts "")
                      "\n")))
    (concat
     (line "Commit:    " (nebgit-field commit ObjectID))
     (mapconcat (lambda (parent) (line "Parent:    " parent))
                (nebgit-field commit Parents) "")
     (line "Author:    " (nebgit-field commit Author) " <" (nebgit-field commit AuthorEmail) ">, "
           (nebgit-date (nebgit-field commit AuthorTime) (nebgit-field commit AuthorTimeOffset)))
     (line "Committer: " (nebgit-field commit Committer) " <" (nebgit-field commit CommitterEmail)
           ">, " (nebgit-date (nebgit-field commit CommitterTime)
                              (nebgit-field commit CommitterTimeOffset))))))

(defun nebgit-revision--summary (files)
  "Return a line for each of FILES with the numbers of its lines."
  (mapconcat (lambda (file)
               (format "%s %s%s\n" (or (nebgit-field file State) "")
                       (nebgit-printable (nebgit-name file Path))
                       (if (nebgit-field file IsBinary) ", binary"
                         (format ", +%d -%d" (or (nebgit-field file AddedLines) 0)
                                 (or (nebgit-field file DeletedLines) 0)))))
             files ""))

(defun nebgit-revision-parent ()
  "Show the first parent of the commit."
  (interactive)
  (nebgit-revision default-directory (concat nebgit-revision--id "^")))

(defun nebgit-revision-visit ()
  "Visit the file of the diff at point, as it is now."
  (interactive)
  (let ((names (ignore-errors (diff-hunk-file-names))))
    (unless names
      (user-error "No file here"))
    (let ((file (expand-file-name (replace-regexp-in-string "\\`[ab]/" "" (car names)))))
      (unless (file-exists-p file)
        (user-error "%s does not exist in the working copy" (file-relative-name file)))
      (find-file-other-window file))))

(provide 'nebgit-revision)
;;; nebgit-revision.el ends here
