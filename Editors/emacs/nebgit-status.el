;;; nebgit-status.el --- Window with the state of a working copy  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; Shows the branch, an unfinished operation, conflicts, untracked, unstaged and staged changes and
;; stashes, each entry on a line of its own.  Each line has the text property `nebgit-item', a
;; plist: `:section', `:path' (nil for the heading), `:record', and `:hunk' and `:line' in a diff.
;; nebgit-selection.el has the entries to act on, nebgit-act.el the commands that change something.

;;; Code:

(require 'nebgit-diff)
(require 'text-property-search)

(defcustom nebgit-status-limit 500
  "How many entries of a section the status shows before it is asked for more.
It counts up to four times as many."
  :type 'natnum
  :group 'nebgit)

(defface nebgit-heading '((t :inherit font-lock-keyword-face :weight bold))
  "Face of the headings of sections."
  :group 'nebgit)

(defface nebgit-branch '((t :inherit font-lock-function-name-face))
  "Face of names of branches."
  :group 'nebgit)

(defface nebgit-warning '((t :inherit warning))
  "Face of conflicts and unfinished operations."
  :group 'nebgit)

(defvar-local nebgit-status--state nil
  "State of the working copy: a plist, see `nebgit-status--new-state'.")

(defvar-local nebgit-status--open nil
  "Alist of (SECTION . PATH), whose diff is shown, and the record of the diff.")

(defvar-local nebgit-status--refreshing nil
  "Whether the status is being read; `again' if it must be read again then.")

(defconst nebgit-status-sections
  '((conflict . "Conflicts") (untracked . "Untracked") (unstaged . "Unstaged changes")
    (staged . "Staged changes") (stash . "Stashes"))
  "Sections, from top to bottom, and their headings.")

;;; Reading

(defun nebgit-status--new-state ()
  "Return an empty state.
For each section `:SECTION' is a list of items, last one first, and
`:SECTION-count' their number, which may exceed `:limit'.  `:head' and
`:operations' are records, `:cut' means that more was not read, `:switched-off'
has the names of settings that are not used, see `nebgit-trusted-folders'."
  (list :head nil :operations nil :limit nebgit-status-limit))

(defun nebgit-status-refresh ()
  "Read the state of the working copy again, and show it.
In the background: git would lock the index for a moment otherwise, and the next
command of the user would fail."
  (interactive)
  (if nebgit-status--refreshing
      (setq nebgit-status--refreshing 'again)
    (setq nebgit-status--refreshing t)
    (let ((buffer (current-buffer))
          (state (nebgit-status--new-state))
          (left 3))
      (cl-flet ((request (type &rest members)
                  (apply #'nebgit-request type default-directory :background t members))
                (finish (outcome)
                  (setq state (nebgit-status--add-switched-off state outcome))
                  (when (and (zerop (cl-decf left)) (buffer-live-p buffer))
                    (with-current-buffer buffer (nebgit-status--finish state)))))
        (nebgit-status--read-pages (request 'state)
                                   (lambda (records)
                                     (dolist (record records)
                                       (setq state (nebgit-status--add state record))))
                                   (lambda (cut &optional outcome)
                                     (setq state (plist-put state :cut cut))
                                     (finish outcome)))
        (nebgit-perform (request 'operation)
                        :success (lambda (records outcome)
                                   (setq state (plist-put state :operations
                                                          (nebgit-status--operations records)))
                                   (finish outcome))
                        :failure (lambda (_ outcome) (finish outcome)))
        (nebgit-perform (request 'stash)
                        :success (lambda (records outcome)
                                   (dolist (record records)
                                     (setq state (nebgit-status--put
                                                  state 'stash (nebgit-field record Name) record)))
                                   (finish outcome))
                        :failure (lambda (_ outcome) (finish outcome)))))))

(defun nebgit-status--read-pages (request add done)
  "Read the records of REQUEST in pages, which ADD gets, then call DONE.
DONE gets nil and the outcome.  Stop after four times `nebgit-status-limit'
records, and pass t to DONE then: to read all changes of a very large working
copy would take Emacs seconds."
  (let ((left (* 4 nebgit-status-limit)) (size (max 1 (min 200 nebgit-status-limit))))
    (cl-labels ((page (records cursor outcome)
                  (funcall add records)
                  (cl-decf left (length records))
                  (cond ((and (not cursor) (plist-get outcome :error)))
                        ((not cursor) (funcall done nil outcome))
                        ((> left 0) (nebgit-next cursor size #'page #'failed))
                        (t (nebgit-close cursor)
                           (funcall done t))))
                (failed (problem outcome)
                  (nebgit-show-error problem outcome)
                  (funcall done nil)))
      (nebgit-open request size #'page #'failed))))

(defun nebgit-status--operations (records)
  "Return those of RECORDS, of type 1010, that are operations and not conflicts."
  (cl-remove "conflict" records :test #'equal :key (lambda (record) (nebgit-field record Kind))))

(defun nebgit-status--put (state section path record)
  "Add an item of SECTION for PATH with RECORD to STATE, and return that."
  (let* ((list-key (intern (format ":%s" section)))
         (count-key (intern (format ":%s-count" section)))
         (count (or (plist-get state count-key) 0)))
    (when (< count (plist-get state :limit))
      (setq state (plist-put state list-key
                             (cons (list :section section :path path :record record)
                                   (plist-get state list-key)))))
    (plist-put state count-key (1+ count))))

(defun nebgit-status--add (state record)
  "Add RECORD, of type 1000, to STATE, and return that."
  (let ((path (nebgit-name record Path)))
    (pcase (nebgit-field record Kind)
      ("head" (setq state (plist-put state :head record)))
      ("untracked" (setq state (nebgit-status--put state 'untracked path record)))
      ("conflict" (setq state (nebgit-status--put state 'conflict path record)))
      ((or "changed" "renamed")
       (when (nebgit-field record IndexState)
         (setq state (nebgit-status--put state 'staged path record)))
       (when (nebgit-field record WorkingTreeState)
         (setq state (nebgit-status--put state 'unstaged path record)))))
    state))

(defun nebgit-status--add-switched-off (state outcome)
  "Add to STATE what OUTCOME, or nil, names as switched off; return STATE.
All requests of the status name it, because the one for the entries, which also
names submodules, has no outcome if it is not read to its end."
  (plist-put state :switched-off
             (delete-dups (append (plist-get state :switched-off)
                                  (plist-get outcome :switchedOff) nil))))

(defun nebgit-status--finish (state)
  "Show STATE, then read what changed meanwhile."
  (let ((again (eq nebgit-status--refreshing 'again)))
    (setq nebgit-status--refreshing nil
          nebgit-status--state state)
    (nebgit-status--draw)
    (nebgit-status--read-open-diffs)
    (when again
      (nebgit-status-refresh))))

;;; Diffs of entries

(defun nebgit-status--key (item)
  "Return the key of ITEM in `nebgit-status--open'."
  (cons (plist-get item :section) (plist-get item :path)))

(defun nebgit-status--read-open-diffs ()
  "Read the diffs of the open entries again; forget those whose entry is gone."
  (setq nebgit-status--open
        (cl-remove-if-not
         (lambda (entry)
           (cl-find (cdar entry) (plist-get nebgit-status--state
                                            (intern (format ":%s" (caar entry))))
                    :test #'equal :key (lambda (item) (plist-get item :path))))
         nebgit-status--open))
  (dolist (entry nebgit-status--open)
    (nebgit-status--read-diff (car entry))))

(defun nebgit-status--read-diff (key)
  "Read the diff of the entry KEY, and show it."
  (let ((buffer (current-buffer)))
    (nebgit-perform
     (nebgit-request 'changes default-directory :files (list (cdr key))
                     :Staged (eq (car key) 'staged))
     :success (lambda (records _)
                (when (buffer-live-p buffer)
                  (with-current-buffer buffer
                    (let ((entry (assoc key nebgit-status--open)))
                      (when (and entry (not (equal (cdr entry) (list (car records)))))
                        (setcdr entry (list (car records)))
                        (nebgit-status--draw)))))))))

(defun nebgit-status-item ()
  "Return the item of the line of point, or signal a `user-error'."
  (or (get-text-property (line-beginning-position) 'nebgit-item)
      (user-error "This line has no entry")))

(defun nebgit-status-toggle-diff ()
  "Show or hide the diff of the entry at point.
Where the status counts further entries, show more of them."
  (interactive)
  (let ((item (nebgit-status-item)))
    (if (plist-get item :rest)
        (nebgit-status--show-more)
      (nebgit-status--toggle-diff item))))

(defun nebgit-status--show-more ()
  "Show more entries of each section in this buffer, those of the next page.
Keep point on the last entry before them."
  (forward-line -1)
  (setq-local nebgit-status-limit (+ nebgit-status-limit (default-value 'nebgit-status-limit)))
  (nebgit-status-refresh))

(defun nebgit-status--toggle-diff (item)
  "Show or hide the diff of ITEM."
  (let ((key (nebgit-status--key item)))
    (unless (memq (car key) '(unstaged staged conflict))
      (user-error "No diff for this line"))
    (unless (cdr key)
      (user-error "Not on a file"))
    (if (assoc key nebgit-status--open)
        (progn (setq nebgit-status--open (assoc-delete-all key nebgit-status--open))
               (nebgit-status--draw))
      (push (list key) nebgit-status--open)
      (nebgit-status--read-diff key))))

;;; Drawing

(defun nebgit-status--line (item face &rest parts)
  "Insert a line of PARTS that belongs to ITEM, with FACE."
  (let ((begin (point)))
    (apply #'insert parts)
    (insert "\n")
    (put-text-property begin (point) 'nebgit-item item)
    (when face
      (add-face-text-property begin (1- (point)) face))))

(defconst nebgit-status--unprintable "[\0-\x1f\x7f\x3fff80-\x3fffff]"
  "Regular expression of a control character or a raw byte.")

(defun nebgit-printable (name)
  "Return NAME on one line: control characters and raw bytes are escaped.
The result may be NAME itself."
  (if (string-match-p nebgit-status--unprintable name)
      (replace-regexp-in-string nebgit-status--unprintable
                                (lambda (char)
                                  (format "\\%03o" (logand #xff (aref char 0))))
                                name t t)
    name))

(defun nebgit-status--draw ()
  "Show the state, and keep point on its entry."
  (let ((positions (mapcar (lambda (window)
                             (cons window (nebgit-status--position (window-point window))))
                           (get-buffer-window-list nil nil t)))
        (here (nebgit-status--position (point))))
    (with-silent-modifications
      (erase-buffer)
      (nebgit-status--draw-head)
      (dolist (section nebgit-status-sections)
        (nebgit-status--draw-section (car section) (cdr section)))
      (when (and (plist-get nebgit-status--state :head) (nebgit-status--clean-p))
        (insert "\n")
        (nebgit-status--line nil 'shadow "Nothing to commit, working tree clean")))
    (goto-char (nebgit-status--find here))
    (pcase-dolist (`(,window . ,position) positions)
      (set-window-point window (nebgit-status--find position)))))

(defun nebgit-status--clean-p ()
  "Return non-nil if there is nothing to commit."
  (cl-notany (lambda (key) (plist-get nebgit-status--state key))
             '(:conflict :untracked :unstaged :staged)))

(defun nebgit-status--position (point)
  "Return what identifies the position POINT: the item, the line and the column."
  (save-excursion
    (goto-char point)
    (list (get-text-property (line-beginning-position) 'nebgit-item)
          (line-number-at-pos) (current-column))))

(defun nebgit-status--find (position)
  "Return the position in the buffer that POSITION, an older one, identifies."
  (pcase-let ((`(,item ,line ,column) position))
    (save-excursion
      (goto-char (point-min))
      (let ((match (and item (text-property-search-forward
                              'nebgit-item item #'nebgit-status--same-p))))
        (if match
            (goto-char (prop-match-beginning match))
          (goto-char (point-min))
          (forward-line (1- line))))
      (move-to-column column)
      (point))))

(defun nebgit-status--same-p (a b)
  "Return non-nil if the items A and B are the same entry, hunk and line."
  (and b (cl-every (lambda (key) (equal (plist-get a key) (plist-get b key)))
                   '(:section :path :hunk-number :line))))

(defun nebgit-status--draw-head ()
  "Insert the branch, its upstream and the unfinished operations.
Say first if the repository is not trusted, or that it could not be read."
  (when (nebgit-inspected-p default-directory)
    (let ((names (plist-get nebgit-status--state :switched-off)))
      (nebgit-status--line '(:section trust) 'nebgit-warning
                           "Not trusted: inspected only (M-x nebgit-trust)"
                           (if names "; switched off: " "")
                           (mapconcat #'nebgit-printable names ", "))))
  (let ((head (plist-get nebgit-status--state :head)))
    (if head
        (nebgit-status--draw-branch head)
      (nebgit-status--line '(:section head) 'nebgit-warning
                           "The working copy could not be read; g tries again"))
    (dolist (operation (plist-get nebgit-status--state :operations))
      (nebgit-status--line (list :section 'operation :record operation) 'nebgit-warning
                           (nebgit-status--operation-text operation)))))

(defun nebgit-status--draw-branch (head)
  "Insert the branch of HEAD, a record, and its upstream."
  (let ((id (nebgit-field head ObjectID))
        (branch (nebgit-name head Name))
        (upstream (nebgit-name head Upstream)))
    (nebgit-status--line '(:section head) nil "Branch:   "
                         (propertize (nebgit-printable (or branch "none, HEAD is detached"))
                                     'face 'nebgit-branch)
                         (if id (format " at %s" (substring id 0 10)) ", no commits yet"))
    (when upstream
      (nebgit-status--line '(:section upstream) nil "Upstream: "
                           (propertize (nebgit-printable upstream) 'face 'nebgit-branch)
                           (nebgit-status--distance head)))))

(defun nebgit-status--distance (head)
  "Return how far the branch of HEAD, a record, is from its upstream."
  (let ((ahead (or (nebgit-field head Ahead) 0))
        (behind (or (nebgit-field head Behind) 0)))
    (concat (when (> ahead 0) (format ", %d to push" ahead))
            (when (> behind 0) (format ", %d to pull" behind)))))

(defun nebgit-status--operation-text (operation)
  "Return a line about OPERATION, a record of type 1010."
  (let ((id (nebgit-field operation ObjectID))
        (step (nebgit-field operation Step))
        (count (nebgit-field operation StepCount)))
    (concat "Unfinished " (nebgit-field operation Kind)
            (when id (format " of %s" (substring id 0 10)))
            (when (and step count) (format ", step %d of %d" step count))
            (when-let ((actions (nebgit-status--actions (nebgit-field operation Kind))))
              (concat ": " (mapconcat (lambda (action)
                                        (concat (upcase (substring action 0 1)) " " action))
                                      actions ", "))))))

(defun nebgit-status--actions (kind)
  "Return the actions that can finish an operation of KIND; a merge has no commits."
  (cond
   ((equal kind "merge") '("continue" "abort"))
   ((member kind '("rebase" "apply" "cherry-pick" "revert")) '("continue" "skip" "abort"))))

(defun nebgit-status--draw-section (section heading)
  "Insert SECTION under HEADING, if it has entries."
  (let* ((items (reverse (plist-get nebgit-status--state (intern (format ":%s" section)))))
         (count (plist-get nebgit-status--state (intern (format ":%s-count" section)))))
    (when items
      (insert "\n")
      (nebgit-status--line (list :section section) 'nebgit-heading
                           (format (if (plist-get nebgit-status--state :cut) "%s (%d or more)"
                                     "%s (%d)")
                                   heading count))
      (dolist (item items)
        (nebgit-status--draw-item item))
      (when (> count (length items))
        (nebgit-status--line (list :section section :rest t) 'shadow
                             (format "… and %d more; = shows more" (- count (length items))))))))

(defun nebgit-status--draw-item (item)
  "Insert ITEM, and its diff if that is open."
  (let* ((record (plist-get item :record))
         (path (nebgit-printable (plist-get item :path)))
         (old (nebgit-name record OriginalPath)))
    (pcase (plist-get item :section)
      ('stash (nebgit-status--line item nil path "  " (or (nebgit-field record Subject) "")))
      ('untracked (nebgit-status--line item nil path))
      (section
       (nebgit-status--line
        item (and (eq section 'conflict) 'nebgit-warning)
        (format "%-10s " (or (pcase section
                               ('staged (nebgit-field record IndexState))
                               ('unstaged (nebgit-field record WorkingTreeState)))
                             (nebgit-field record Conflict) ""))
        (if (and old (eq section 'staged)) (concat (nebgit-printable old) " → ") "")
        path)
       (nebgit-status--draw-diff item (cadr (assoc (nebgit-status--key item)
                                                   nebgit-status--open)))))))

(defun nebgit-status--draw-diff (item file)
  "Insert the hunks of FILE, a record of type 1004 or nil, below its ITEM."
  (when (nebgit-field file IsBinary)
    (nebgit-status--line item 'shadow "  Binary files differ"))
  (cl-loop
   for hunk across (or (nebgit-field file Hunks) [])
   for number from 1
   do (let ((part (append item (list :file file :hunk hunk :hunk-number number))))
        (nebgit-status--line part 'diff-hunk-header (nebgit-diff-hunk-header hunk))
        (cl-loop for line in (nebgit-diff-lines hunk)
                 for index from 1
                 do (nebgit-status--line (append part (list :line index))
                                         (nebgit-diff-face line) (nebgit-printable line))))))

(provide 'nebgit-status)
;;; nebgit-status.el ends here
