;;; nebgit-log.el --- Log with graph, in pages  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; Reads a page of commits when point or the window comes near the end, from a cursor of the server:
;; a log of any length opens at once.

;;; Code:

(require 'nebgit-branch)
(require 'nebgit-graph)
(require 'nebgit-revision)
(require 'nebgit-watch)

(defcustom nebgit-log-page 100
  "How many commits the log reads at a time."
  :type '(integer :match (lambda (_ value) (and (integerp value) (< 0 value 10001))))
  :group 'nebgit)

(defface nebgit-id '((t :inherit font-lock-constant-face))
  "Face of the ids of commits."
  :group 'nebgit)

(defface nebgit-reference '((t :inherit font-lock-type-face))
  "Face of the names of branches and tags in the log."
  :group 'nebgit)

(defvar-local nebgit-log--request nil
  "Members of the request of the log, a plist.")

(defvar-local nebgit-log--cursor nil
  "Cursor of the rest of the log; nil if all of it is shown.")

(defvar-local nebgit-log--reading nil
  "Task that reads a page.")

(defvar-local nebgit-log--ends nil
  "Pair of the ids of the first and the last commit that the log shows, or nil.")

(defvar-local nebgit-log--skip nil
  "Id up to which commits are left out that are read again, or nil.")

(defvar-local nebgit-log--lanes nil
  "Lanes of the graph below the last commit.")

(defvar nebgit-log-mode-map
  (let ((map (make-sparse-keymap)))
    (cl-loop for (keys command) in
             '(("RET" nebgit-log-show) ("n" nebgit-log-next) ("p" nebgit-log-previous)
               ("+" nebgit-log-more) ("g" nebgit-log-refresh) ("w" nebgit-log-copy-id)
               ("A" nebgit-log-cherry-pick) ("V" nebgit-log-revert) ("x" nebgit-log-reset)
               ("b" nebgit-log-create-branch) ("t" nebgit-log-tag))
             do (define-key map (kbd keys) command))
    map)
  "Keys of the log.")

(define-derived-mode nebgit-log-mode special-mode "NEBGit log"
  "Major mode of the log.
\\{nebgit-log-mode-map}"
  (setq truncate-lines t)
  (buffer-disable-undo)
  (setq-local revert-buffer-function (lambda (&rest _) (nebgit-log-refresh)))
  (add-hook 'post-command-hook #'nebgit-log--read-near-end nil t)
  (add-hook 'window-scroll-functions #'nebgit-log--scrolled nil t)
  (add-hook 'kill-buffer-hook #'nebgit-log--close nil t))

;;;###autoload (autoload 'nebgit-log "nebgit" nil t)
(defun nebgit-log (&optional all)
  "Show the log of HEAD, with prefix argument ALL that of all branches and tags."
  (interactive "P")
  (nebgit-log-open (nebgit-need-root)
                   (if all '(:AllReferences t :Order "topology") '(:Order "topology"))
                   (if all "all references" "HEAD")))

(defun nebgit-log-all ()
  "Show the log of all branches and tags."
  (interactive)
  (nebgit-log t))

;;;###autoload (autoload 'nebgit-log-file "nebgit" nil t)
(defun nebgit-log-file ()
  "Show the log of the file of this buffer, beyond renames."
  (interactive)
  (let ((root (nebgit-need-root)))
    (unless buffer-file-name
      (user-error "This buffer has no file"))
    (let ((path (file-relative-name buffer-file-name root)))
      (nebgit-log-open root (list :files (list path) :Follow t) path))))

(defun nebgit-log-open (root members title)
  "Show the log of ROOT under TITLE, and return its buffer.
MEMBERS are those of the request."
  (let ((buffer (get-buffer-create (format "*nebgit log: %s %s*" (directory-file-name root)
                                           (nebgit-printable title)))))
    (with-current-buffer buffer
      (unless (derived-mode-p 'nebgit-log-mode)
        (nebgit-log-mode))
      (setq default-directory root
            nebgit-log--request members)
      (nebgit-watch-buffer root)
      (nebgit-log-refresh))
    (pop-to-buffer buffer)
    buffer))

;;; Reading

(defun nebgit-log-refresh ()
  "Read the log again from its start; keep point on its commit."
  (interactive)
  (nebgit-log--close)
  (setq nebgit-log--lanes nil
        nebgit-log--ends nil
        nebgit-log--skip nil)
  (nebgit-log--open nil t))

(defun nebgit-log--open (from first)
  "Begin to read the log, from the commit FROM if it is not nil.
FIRST means that its first page replaces the text."
  (let ((request (apply #'nebgit-request 'history default-directory
                        (append (and from (list :from from)) nebgit-log--request))))
    (nebgit-log--read (apply-partially #'nebgit-open request nebgit-log-page) first
                      #'nebgit-log--show-failure)))

(defun nebgit-log-more ()
  "Read the next page of the log."
  (interactive)
  (when (and nebgit-log--cursor (not nebgit-log--reading))
    (nebgit-log--read (apply-partially #'nebgit-next nebgit-log--cursor nebgit-log-page) nil
                      #'nebgit-log--go-on)))

(defun nebgit-log--read (call first failed)
  "Read a page with CALL, a function of what to do after success and failure.
FIRST is as of `nebgit-log--open'.  FAILED gets an error and its outcome."
  (let ((buffer (current-buffer)) task current)
    (setq task (funcall call
                        (lambda (records cursor outcome)
                          (setq current (nebgit-log--reads-p buffer task))
                          (nebgit-log--add buffer task records cursor first)
                          (unless (or cursor (plist-get outcome :error))
                            (nebgit-log--end buffer)))
                        (lambda (problem outcome)
                          (when (and (or current (nebgit-log--reads-p buffer task))
                                     (buffer-live-p buffer))
                            (with-current-buffer buffer
                              (setq nebgit-log--reading nil
                                    nebgit-log--cursor nil)
                              (funcall failed problem outcome))))))
    ;; A call that cannot be sent has failed already.
    (unless (eq (nebgit-task-state task) 'done)
      (setq nebgit-log--reading task))))

(defun nebgit-log--reads-p (buffer task)
  "Return non-nil if TASK is the one that the log in BUFFER waits for."
  (and (buffer-live-p buffer) (eq task (buffer-local-value 'nebgit-log--reading buffer))))

(defun nebgit-log--show-failure (problem outcome)
  "Show PROBLEM with its OUTCOME.
If the commits that were to be left out are gone, read the log from its start."
  (if nebgit-log--skip
      (nebgit-log-refresh)
    (nebgit-show-error problem outcome)))

(defun nebgit-log--go-on (problem outcome)
  "Read the rest of the log again if PROBLEM is that its cursor was closed.
The same if the server has ended.  Otherwise show PROBLEM with its OUTCOME."
  (if (not (and nebgit-log--ends
                (or (nebgit-cursor-closed-p problem) (not (nebgit-server-p)))))
      (nebgit-log--show-failure problem outcome)
    (setq nebgit-log--skip (cdr nebgit-log--ends))
    (nebgit-log--open (unless (plist-get nebgit-log--request :AllReferences)
                        (car nebgit-log--ends))
                      nil)))

(defun nebgit-log--without-skipped (records)
  "Return RECORDS without those up to `nebgit-log--skip'."
  (let* ((id (lambda (commit) (nebgit-field commit ObjectID)))
         (skipped (and nebgit-log--skip
                       (cl-position nebgit-log--skip records :test #'equal :key id)))
         (rest (cond (skipped (nthcdr (1+ skipped) records))
                     ((not nebgit-log--skip) records))))
    (when skipped
      (setq nebgit-log--skip nil))
    (when rest
      (setq nebgit-log--ends (cons (or (car nebgit-log--ends) (funcall id (car rest)))
                                   (funcall id (car (last rest))))))
    rest))

(defun nebgit-log--add (buffer task records cursor first)
  "Show RECORDS, the page that TASK read, in BUFFER.
Keep the CURSOR of the rest.  FIRST means that it is the first page.  The page
of an older log is dropped."
  (if (not (nebgit-log--reads-p buffer task))
      (when cursor (nebgit-close cursor))
    (with-current-buffer buffer
      (setq nebgit-log--reading nil
            nebgit-log--cursor cursor)
      (let ((rest (nebgit-log--without-skipped records)))
        (nebgit-log--show rest first)
        (when (and cursor records (not rest))
          (nebgit-log-more))))))

(defun nebgit-log--end (buffer)
  "Read the log of BUFFER from its start if the commits to leave out are gone."
  (when (buffer-live-p buffer)
    (with-current-buffer buffer
      (when (and nebgit-log--skip (not nebgit-log--reading))
        (nebgit-log-refresh)))))

(defun nebgit-log--show (commits first)
  "Append COMMITS; FIRST means that they replace the text.
Point stays on its commit if that is among them, in the windows, too."
  (let ((points (and first (nebgit-log--points))))
    (with-silent-modifications
      (when first (erase-buffer))
      (save-excursion
        (goto-char (point-max))
        (mapc #'nebgit-log--insert commits)
        (unless (or nebgit-log--cursor (> (point-max) 1))
          (insert "No commits\n"))))
    (mapc #'nebgit-log--restore-point points)))

(defun nebgit-log--points ()
  "Return a list of pairs: a window of this buffer and the id of its commit.
The window is nil for the point of the buffer.  The first line is left out."
  (cl-loop for window in (cons nil (get-buffer-window-list nil nil t))
           for commit = (save-excursion
                          (goto-char (if window (window-point window) (point)))
                          (beginning-of-line)
                          (and (not (bobp)) (get-text-property (point) 'nebgit-commit)))
           when commit collect (cons window (nebgit-field commit ObjectID))))

(defun nebgit-log--restore-point (pair)
  "Go to the commit of PAIR, one of `nebgit-log--points', if it is shown."
  (let ((match (save-excursion
                 (goto-char (point-min))
                 (text-property-search-forward
                  'nebgit-commit (cdr pair)
                  (lambda (id commit) (and commit (equal id (nebgit-field commit ObjectID))))))))
    (when match
      (if (car pair)
          (set-window-point (car pair) (prop-match-beginning match))
        (goto-char (prop-match-beginning match))))))

(defun nebgit-log--close ()
  "Close the cursor and give up the page that is being read."
  (when nebgit-log--reading
    (nebgit-cancel-task nebgit-log--reading))
  (when nebgit-log--cursor
    (nebgit-close nebgit-log--cursor))
  (setq nebgit-log--cursor nil
        nebgit-log--reading nil))

(defun nebgit-log--read-near-end ()
  "Read the next page if point is near the end."
  (when (and nebgit-log--cursor (not nebgit-log--reading)
             (< (count-lines (point) (point-max)) 50))
    (nebgit-log-more)))

(defun nebgit-log--scrolled (window start)
  "Read the next page if WINDOW, whose text begins at START, is near the end."
  (with-current-buffer (window-buffer window)
    (save-excursion
      (goto-char start)
      (when (< (- (count-lines start (point-max)) (window-height window)) 50)
        (nebgit-log-more)))))

;;; Drawing

(defun nebgit-log--graph-p ()
  "Return non-nil if the log has all commits, so that a graph fits."
  (not (plist-get nebgit-log--request :files)))

(defun nebgit-log--insert (commit)
  "Insert COMMIT, a record of type 1001, at the end."
  (let ((graph (if (nebgit-log--graph-p)
                   (nebgit-graph-add nebgit-log--lanes (nebgit-field commit ObjectID)
                                     (nebgit-list (nebgit-field commit Parents)))
                 (list nil "*" nil)))
        (begin (point)))
    (setq nebgit-log--lanes (car graph))
    (insert (nth 1 graph) " ")
    ;; Only there, because a property of the whole line would be copied for each face.
    (put-text-property begin (point) 'nebgit-commit commit)
    (nebgit-log--insert-with-face 'nebgit-id (substring (nebgit-field commit ObjectID) 0 10))
    (insert " ")
    (nebgit-log--insert-with-face 'nebgit-reference (nebgit-log--references commit))
    (insert (nebgit-printable (nebgit-decode (or (nebgit-field commit Subject) ""))))
    (nebgit-log--insert-with-face
     'shadow "  " (nebgit-decode (or (nebgit-field commit Author) "")) ", "
     (nebgit-date (nebgit-field commit AuthorTime) (nebgit-field commit AuthorTimeOffset)))
    (insert "\n")
    (dolist (line (nth 2 graph))
      (insert line "\n"))))

(defun nebgit-log--insert-with-face (face &rest parts)
  "Insert the strings PARTS with FACE."
  (let ((begin (point)))
    (apply #'insert parts)
    (put-text-property begin (point) 'face face)))

(defun nebgit-log--references (commit)
  "Return the names of branches and tags of COMMIT and a space, or an empty string."
  (let ((names (mapcar (lambda (name) (nebgit-printable (nebgit--short-name (nebgit-decode name))))
                       (nebgit-field commit References))))
    (when (nebgit-field commit IsHEAD)
      (push "HEAD" names))
    (if names
        (format "(%s) " (string-join names ", "))
      "")))

;;; Commands

(defun nebgit-log-commit ()
  "Return the commit at point, a record; on a line of the graph the one above."
  (or (save-excursion
        (beginning-of-line)
        (while (and (not (get-text-property (point) 'nebgit-commit))
                    (zerop (forward-line -1))))
        (get-text-property (point) 'nebgit-commit))
      (user-error "No commit here")))

(defun nebgit-log--id ()
  "Return the full id of the commit at point."
  (nebgit-field (nebgit-log-commit) ObjectID))

(defun nebgit-log-show ()
  "Show the message and the diff of the commit at point."
  (interactive)
  (nebgit-revision default-directory (nebgit-log--id)))

(defun nebgit-log-next (&optional backward)
  "Go to the next commit, or with BACKWARD to the previous one."
  (interactive)
  (let ((start (point)))
    (beginning-of-line)
    (while (and (zerop (forward-line (if backward -1 1)))
                (not (eobp))
                (not (get-text-property (point) 'nebgit-commit))))
    (unless (get-text-property (point) 'nebgit-commit)
      (goto-char start))))

(defun nebgit-log-previous ()
  "Go to the previous commit."
  (interactive)
  (nebgit-log-next t))

(defun nebgit-log-copy-id ()
  "Copy the full id of the commit at point."
  (interactive)
  (kill-new (nebgit-log--id))
  (message "%s" (nebgit-log--id)))

(provide 'nebgit-log)
;;; nebgit-log.el ends here
