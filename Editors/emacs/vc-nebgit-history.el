;;; vc-nebgit-history.el --- Log, diff and annotation of the VC backend  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; The part of vc-nebgit.el that reads the history.

;;; Code:

(require 'log-view)
(require 'vc-annotate)
(require 'vc-nebgit)

;;; Log

(define-derived-mode vc-nebgit-log-view-mode log-view-mode "NEBGit-Log"
  "Major mode of the logs of VC."
  (setq-local log-view-file-re regexp-unmatchable)
  (setq-local log-view-per-file-logs nil)
  (setq-local log-view-message-re
              (if (memq vc-log-view-type '(short log-outgoing log-incoming))
                  "^\\([0-9a-f]\\{10\\}\\) "
                "^commit \\([0-9a-f]+\\)")))

(defun vc-nebgit--insert-log (buffer commits short)
  "Insert COMMITS, records of type 1001, into BUFFER; SHORT on a line each.
Point stays before them."
  (with-current-buffer buffer
    (with-silent-modifications
      (save-excursion
        (goto-char (point-max))
        (dolist (commit commits)
          (vc-nebgit--insert-entry commit short))))))

(defun vc-nebgit--insert-entry (commit short)
  "Insert COMMIT, a record of type 1001; SHORT on a line."
  (let ((author (nebgit-decode (or (nebgit-field commit Author) "")))
        (date (nebgit-date (nebgit-field commit AuthorTime)
                           (nebgit-field commit AuthorTimeOffset)))
        (id (nebgit-field commit ObjectID)))
    (if short
        (insert (substring id 0 10) " " (substring date 0 10) " " author "  "
                (nebgit-printable (nebgit-decode (or (nebgit-field commit Subject) ""))) "\n")
      (insert "commit " id "\nAuthor: " author " <"
              (nebgit-decode (or (nebgit-field commit AuthorEmail) "")) ">\nDate:   " date "\n\n"
              (replace-regexp-in-string "^\\(.\\)" "    \\1"
                                        (string-trim-right (nebgit-message-of commit)))
              "\n\n"))))

(defun vc-nebgit--log (files buffer short &rest members)
  "Insert the log of FILES into BUFFER, SHORT or not.
MEMBERS are added to the request."
  (let* ((root (vc-nebgit--here files))
         (paths (and files (vc-nebgit--paths files root))))
    (vc-setup-buffer buffer)
    (vc-nebgit--insert-log
     buffer
     (apply #'vc-nebgit--perform nil 'history root :files paths
            :Follow (and paths (not (cdr paths)) (file-regular-p (car files)))
            members)
     short)))

(defun vc-nebgit-print-log (files buffer &optional short start limit)
  "Insert the log of FILES into BUFFER, with SHORT one line each.
It begins with the commit START and has at most LIMIT ones."
  (vc-nebgit--log files buffer short :from start :LogOutputLimit limit))

(defun vc-nebgit--remote (location)
  "Return the branch to compare with: LOCATION or the upstream branch."
  (if (member location '(nil "")) "@{upstream}" location))

(defun vc-nebgit-log-outgoing (buffer location)
  "Insert the commits that a push to LOCATION sends into BUFFER."
  (vc-nebgit--log nil buffer t :from "HEAD" :to (vc-nebgit--remote location)))

(defun vc-nebgit-log-incoming (buffer location)
  "Insert the commits of LOCATION that HEAD does not have into BUFFER."
  (vc-nebgit--log nil buffer t :from (vc-nebgit--remote location) :to "HEAD"))

(defun vc-nebgit-log-search (buffer pattern)
  "Insert the commits with PATTERN in the message into BUFFER."
  (vc-nebgit--log nil buffer nil :SearchMessage pattern))

(defun vc-nebgit-show-log-entry (revision)
  "Go to the entry of REVISION."
  (goto-char (point-min))
  (when (and revision (not (equal revision "")))
    (re-search-forward (concat "^\\(?:commit \\)?" (regexp-quote (substring revision 0 10))) nil t)
    (beginning-of-line)))

;;; Revisions

(defun vc-nebgit--ids (file &rest members)
  "Return the ids of the commits that changed FILE.
MEMBERS are added to the request."
  (let ((root (vc-nebgit--here (list file))))
    (mapcar (lambda (commit) (nebgit-field commit ObjectID))
            (apply #'vc-nebgit--perform nil 'history root
                   :files (vc-nebgit--paths (list file) root) members))))

(defun vc-nebgit-previous-revision (file revision)
  "Return the commit before REVISION that changed FILE, or nil."
  (cadr (vc-nebgit--ids file :from revision :LogOutputLimit 2)))

(defun vc-nebgit-next-revision (file revision)
  "Return the commit after REVISION that changed FILE, or nil."
  (car (last (vc-nebgit--ids file :from "HEAD" :to revision))))

(defun vc-nebgit-revision-completion-table (files)
  "Return the names of branches and tags of the repository of FILES."
  (let ((root (vc-nebgit--here files)))
    (cons "HEAD" (mapcar (lambda (record) (nebgit--short-name (nebgit-name record Name)))
                         (vc-nebgit--perform nil 'references root)))))

(defun vc-nebgit-mergebase (first &optional second)
  "Return the common ancestor of the revisions FIRST and SECOND, by default HEAD."
  (let ((record (car (vc-nebgit--perform nil 'merge-base (vc-nebgit--here nil)
                                         :from first :to (or second "HEAD")))))
    (nebgit-field record Revision)))

;;; Diff

(defun vc-nebgit-diff (files &optional first second buffer _async)
  "Insert the diff of FILES between FIRST and SECOND into BUFFER.
FIRST is by default HEAD, SECOND the working copy.  Return 1 if there are
differences, otherwise 0."
  (let* ((root (vc-nebgit--here files))
         (records (vc-nebgit--perform nil 'changes root
                                      :files (and files (vc-nebgit--paths files root))
                                      :from (or first "HEAD") :to second)))
    (with-current-buffer (get-buffer-create (or buffer "*vc-diff*"))
      (with-silent-modifications
        (setq default-directory root)
        (erase-buffer)
        (nebgit-diff-insert records)))
    (if records 1 0)))

;;; Annotation

(defun vc-nebgit-annotate-command (file buffer &optional revision)
  "Insert FILE in REVISION with the commit of each line into BUFFER."
  (let* ((root (vc-nebgit--here (list file)))
         (records (vc-nebgit--perform nil 'annotation root
                                      :files (list (vc-nebgit--path file root)) :from revision)))
    (with-current-buffer buffer
      (with-silent-modifications
        (erase-buffer)
        (dolist (record (sort records (lambda (a b) (< (nebgit-field a FirstLine)
                                                       (nebgit-field b FirstLine)))))
          (mapc (lambda (line) (vc-nebgit--insert-annotation record (nebgit-decode line)))
                (nebgit-field record Lines)))))))

(defun vc-nebgit--insert-annotation (record line)
  "Insert LINE with the commit of RECORD, of type 1003."
  (let ((begin (point)))
    (insert (nebgit-blame--head record) " │ " line "\n")
    (put-text-property begin (point) 'nebgit-commit record)))

(defun vc-nebgit-annotate-time ()
  "Return the time of the line at point in days, and go behind the annotation."
  (let ((record (get-text-property (point) 'nebgit-commit)))
    (when record
      (search-forward " │ " (line-end-position) t)
      (vc-annotate-convert-time (seconds-to-time (or (nebgit-field record AuthorTime)
                                                     (float-time)))))))

(defun vc-nebgit-annotate-extract-revision-at-line ()
  "Return the commit and the file of the line at point; nil if it is not committed."
  (let ((record (get-text-property (line-beginning-position) 'nebgit-commit)))
    (when (nebgit-field record ObjectID)
      (cons (nebgit-field record ObjectID)
            (expand-file-name (nebgit-name record OriginalPath) (vc-nebgit--here nil))))))

(provide 'vc-nebgit-history)
;;; vc-nebgit-history.el ends here
