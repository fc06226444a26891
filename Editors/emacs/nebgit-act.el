;;; nebgit-act.el --- Commands that change the working copy  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; Stages, unstages and discards the entries of the status, finishes operations, pushes, pulls,
;; fetches and stashes.  A question is asked from a timer, never while a message is read.

;;; Code:

(require 'nebgit-selection)

(defcustom nebgit-pull-strategy "merge"
  "How a pull integrates the commits of the upstream branch."
  :type '(choice (const :tag "Merge" "merge") (const :tag "Rebase" "rebase")
                 (const :tag "Fast-forward only" "fast-forward"))
  :group 'nebgit)

(defun nebgit-later (function &rest arguments)
  "Call FUNCTION with ARGUMENTS when Emacs is idle again; it may ask the user.
Questions are asked in the minibuffer, as after a key."
  (apply #'run-at-time 0 nil
         (lambda (&rest values)
           (with-local-quit
             (condition-case problem
                 (let ((use-dialog-box nil))
                   (apply function values))
               (user-error (message "%s" (error-message-string problem))))))
         arguments))

(defun nebgit-act (type members &optional title done)
  "Carry out a request of TYPE with MEMBERS here, then show TITLE as done.
DONE, if given, gets the records and the outcome instead."
  (nebgit-perform (apply #'nebgit-request type (nebgit-need-root) members)
                  :title title
                  :success (or done (lambda (&rest _)
                                      (when title (message "NEBGit: %s: done" title))))))

(defun nebgit--section (items &rest sections)
  "Signal a `user-error' unless ITEMS are in one of SECTIONS; return the section."
  (let ((section (plist-get (car items) :section)))
    (cond
     ((not items) (user-error "No entry here"))
     ((memq section sections) section)
     (t (user-error "Not possible for %s"
                    (downcase (or (alist-get section nebgit-status-sections) "this line")))))))

(defun nebgit--entries (items)
  "Return those of ITEMS that are whole entries and not hunks."
  (cl-remove-if (lambda (item) (plist-get item :hunk)) items))

(defun nebgit--act-on (type items paths)
  "Carry out a request of TYPE for the hunks of ITEMS, then one for PATHS."
  (let ((patch (nebgit-selection-patch items (not (eq type 'stage))))
        (root default-directory))
    (cl-flet ((act-on-paths (&rest _)
                (when paths
                  (let ((default-directory root))
                    (nebgit-act type (list :files paths))))))
      (if patch
          (nebgit-act type (list :Patch patch) nil #'act-on-paths)
        (act-on-paths)))))

;;; Stage, unstage, discard

(defun nebgit-stage ()
  "Stage the entries or the hunk at point, or the entries or lines in the region."
  (interactive)
  (let ((items (nebgit-selection)))
    (nebgit--section items 'untracked 'unstaged 'conflict)
    (nebgit--act-on 'stage items (nebgit--all-paths (nebgit--entries items)))))

(defun nebgit--all-paths (items)
  "Return the paths of ITEMS, which must be the whole section if it is chosen."
  (let* ((section (plist-get (car items) :section))
         (count (plist-get nebgit-status--state (intern (format ":%s-count" section)))))
    (when (and count (> count nebgit-status-limit) (= (length items) nebgit-status-limit))
      (message "NEBGit: only the first %d of %d entries" nebgit-status-limit count))
    (nebgit-selection-paths items)))

(defun nebgit-stage-all ()
  "Stage everything in the working copy, also untracked files."
  (interactive)
  (nebgit-act 'stage nil))

(defun nebgit-unstage ()
  "Unstage the entries or the hunk at point, or the entries or lines in the region."
  (interactive)
  (let* ((items (nebgit-selection t))
         (entries (nebgit--entries items)))
    (nebgit--section items 'staged)
    (nebgit--act-on 'unstage items
                    (append (nebgit-selection-paths entries) (nebgit--old-paths entries)))))

(defun nebgit--old-paths (items)
  "Return the original paths of the renamed ones of ITEMS."
  (delq nil (mapcar (lambda (item)
                      (let ((record (plist-get item :record)))
                        (and (equal (nebgit-field record IndexState) "renamed")
                             (nebgit-name record OriginalPath))))
                    items)))

(defun nebgit-unstage-all ()
  "Make the index like HEAD; the files stay as they are."
  (interactive)
  (nebgit-act 'unstage nil))

(defun nebgit-discard ()
  "Throw away what is modified at point or in the region, or drop a stash.
Say what is lost, and ask first."
  (interactive)
  (let* ((items (nebgit-selection t))
         (section (nebgit--section items 'untracked 'unstaged 'stash))
         (entries (nebgit--entries items)))
    (cond
     ((eq section 'stash) (nebgit-stash-drop))
     ((not (plist-get (car items) :hunk))
      (nebgit--discard-files (nebgit-need-root) (nebgit--all-paths items)
                             (eq section 'untracked)))
     (entries (user-error "The region has hunks and whole files; discard them one after another"))
     ((yes-or-no-p (nebgit--hunk-question items))
      (nebgit-act 'discard (list :Patch (nebgit-selection-patch items t) :Force t))))))

(defun nebgit--hunk-question (items)
  "Return the question whether ITEMS, hunks of one file, may be lost."
  (let ((lines (apply #'+ (mapcar (lambda (item)
                                    (cl-count-if #'nebgit-diff-change-p
                                                 (nebgit-diff-lines (plist-get item :hunk))))
                                  items)))
        (path (nebgit-printable (plist-get (car items) :path))))
    (format "Discard %s of %s (%d changed line%s)? "
            (cond ((plist-get (car items) :partial) "these lines")
                  ((cdr items) (format "%d hunks" (length items)))
                  (t "this hunk"))
            path lines (if (= lines 1) "" "s"))))

(defun nebgit--discard-files (root paths untracked)
  "Ask whether PATHS below ROOT may be lost, then discard them.
UNTRACKED means to delete files that git does not know."
  (cl-flet ((request (&rest members)
              (apply #'nebgit-request 'discard root :files paths
                     :IncludeUntracked untracked members)))
    (nebgit-perform
     (request :DryRun t)
     :success (lambda (records _)
                (nebgit-later
                 (lambda ()
                   (when (yes-or-no-p (nebgit--loss-question records untracked))
                     (nebgit-perform (request :Force t)
                                     :success (lambda (lost _)
                                                (message "NEBGit: %s discarded"
                                                         (nebgit--count lost "file")))))))))))

(defun nebgit--count (list noun)
  "Return the length of LIST and NOUN, in the plural unless it is one."
  (format "%d %s%s" (length list) noun (if (= (length list) 1) "" "s")))

(defun nebgit--loss-question (records untracked)
  "Return the question whether the files of RECORDS may be lost.
UNTRACKED means that they are deleted."
  (let* ((names (mapcar (lambda (record) (nebgit-printable (nebgit-name record Path))) records))
         (shown (string-join (seq-take names 5) ", ")))
    (format "%s %s%s%s? "
            (if untracked "Delete" "Lose the changes of")
            (if (cdr names) (concat (nebgit--count names "file") ": ") "")
            shown (if (nthcdr 5 names) ", …" ""))))

;;; Unfinished operations

(defun nebgit-continue ()
  "Continue the unfinished merge, rebase, cherry-pick or revert."
  (interactive)
  (nebgit-act 'finish '(:Action "continue") "continue"))

(defun nebgit--finish-operation (action question)
  "Carry out ACTION, \"skip\" or \"abort\", if the user agrees.
QUESTION is asked with the kind of the operation in place of %s."
  (let ((root (nebgit-need-root)))
    (nebgit-perform
     (nebgit-request 'operation root)
     :success
     (lambda (records _)
       (let ((kind (nebgit-field (car (nebgit-status--operations records)) Kind)))
         (cond
          ((member action (nebgit-status--actions kind))
           (nebgit-later
            (lambda ()
              (when (yes-or-no-p (format question kind))
                (let ((default-directory root))
                  (nebgit-act 'finish (list :Action action) action))))))
          ((nebgit-status--actions kind)
           (message "NEBGit: a %s has no commits to %s" kind action))
          (t
           (message "NEBGit: there is no merge, rebase, cherry-pick or revert to %s" action))))))))

(defun nebgit-skip ()
  "Leave out the current commit of the unfinished rebase, cherry-pick or revert."
  (interactive)
  (nebgit--finish-operation "skip" "Leave out the commit that is being applied by the %s? "))

(defun nebgit-abort ()
  "Abort the unfinished operation; what was resolved is lost."
  (interactive)
  (nebgit--finish-operation "abort" "Abort the %s and lose what was resolved? "))

;;; Trust

(defun nebgit-trust ()
  "Trust the repository of the current buffer until Emacs exits.
`nebgit-trusted-folders' keeps it."
  (interactive)
  (let ((root (nebgit-need-root)))
    (unless (nebgit-inspected-p root)
      (user-error "The repository is trusted already"))
    (push root nebgit-trust--roots)
    (run-hook-with-args 'nebgit-changed-hook root)
    (message "NEBGit: trusted until Emacs exits; customize nebgit-trusted-folders to keep it")))

;;; Remotes

(defun nebgit-push (&optional force)
  "Push the current branch.
With prefix argument FORCE, replace the branch of the remote if it is still as
it was fetched."
  (interactive "P")
  (when (or (not force) (yes-or-no-p "Replace the commits of the remote branch? "))
    (nebgit--push (nebgit-need-root) (and force '(:ForceWithLease t)))))

(defun nebgit--push (root options)
  "Push from ROOT with OPTIONS; offer to set a missing upstream branch."
  (nebgit-perform
   (apply #'nebgit-request 'publish root options)
   :title "push"
   :success (lambda (records _) (message "NEBGit: push: %s" (nebgit--push-summary records)))
   :failure (lambda (problem outcome)
              (if (and (member (nebgit-error-class problem) '("no-upstream" "no-push-destination"))
                       (not (plist-member options :SetUpstream)))
                  (nebgit--push-new root options)
                (nebgit-show-error problem outcome)))))

(defun nebgit--push-summary (records)
  "Return a text about RECORDS of type 1012, with the lines of the remote below."
  (let ((pushed (cl-loop for record in records
                         for name = (nebgit-name record Name)
                         when name
                         collect (format "%s %s" (string-remove-prefix "refs/heads/" name)
                                         (nebgit-field record State))))
        (lines (cl-loop for record in records
                        append (nebgit-list (nebgit-field record RemoteLines)))))
    (concat (if pushed (string-join pushed ", ") "done")
            (mapconcat (lambda (line) (concat "\nremote: " (nebgit-printable (nebgit-decode line))))
                       lines ""))))

(defun nebgit--push-new (root options)
  "Ask for the remote of the branch of ROOT, then push with OPTIONS."
  (nebgit-perform
   (nebgit-request 'state root :UntrackedFiles "no")
   :success
   (lambda (records _)
     (let ((branch (nebgit-name (car records) Name)))
       (if (not branch)
           (message "NEBGit: HEAD is detached; switch to a branch first")
         (nebgit-with-remote
          root (format "Push the new branch %s to: " branch)
          (lambda (remote)
            (nebgit--push root (append options (list :RemoteName remote :Branch branch
                                                     :SetUpstream t))))))))))

(defun nebgit-with-remote (root prompt function)
  "Call FUNCTION with the name of a remote of ROOT; PROMPT if there are several."
  (nebgit-perform
   (nebgit-request 'remotes root)
   :success
   (lambda (records _)
     (let ((names (delete-dups (delq nil (mapcar (lambda (r) (nebgit-field r RemoteName))
                                                 records)))))
       (cond
        ((not names) (message "NEBGit: the repository has no remote"))
        ((cdr names) (nebgit-later (lambda ()
                                     (funcall function
                                              (completing-read prompt names nil t nil nil
                                                               (car (member "origin" names)))))))
        (t (funcall function (car names))))))))

(defun nebgit-pull ()
  "Fetch the upstream branch, and integrate it by `nebgit-pull-strategy'."
  (interactive)
  (nebgit-act 'integrate (list :Strategy nebgit-pull-strategy)
              "pull" #'nebgit-show-head-change))

(defun nebgit-show-head-change (records &optional _outcome)
  "Say whether HEAD moved, after the first of RECORDS, of kind `head'."
  (let ((old (nebgit-field (car records) OldObjectID))
        (new (nebgit-field (car records) ObjectID)))
    (message "NEBGit: %s" (if (equal old new) "already up to date"
                            (format "HEAD is now at %s" (substring new 0 10))))))

(defun nebgit-fetch ()
  "Fetch from the remote, or from one of several."
  (interactive)
  (let ((root (nebgit-need-root)))
    (nebgit-with-remote
     root "Fetch from: "
     (lambda (remote)
       (nebgit-perform
        (nebgit-request 'fetch root :RemoteName remote :remote (make-hash-table))
        :title "fetch"
        :success (lambda (&rest _) (message "NEBGit: fetched from %s" remote)))))))

;;; Stashes

(defun nebgit-stash-push (text &optional untracked)
  "Stash the work under TEXT, with prefix argument UNTRACKED also new files."
  (interactive "sStash message (optional): \nP")
  (nebgit-act 'stash (list :Action "push" :Message (and (not (string-empty-p text)) text)
                           :IncludeUntracked (and untracked t))
              "stash" (lambda (records _)
                        (message "NEBGit: %s" (if records "changes stashed" "nothing to stash")))))

(defun nebgit--stash-at-point (action title)
  "Do ACTION, called TITLE, with the stash at point or else the newest one."
  (let ((item (get-text-property (line-beginning-position) 'nebgit-item)))
    (nebgit-act 'stash (list :Action action
                             :from (and (eq (plist-get item :section) 'stash)
                                        (nebgit-field (plist-get item :record) ObjectID)))
                title)))

(defun nebgit-stash-pop ()
  "Apply the stash at point, or the newest one, and drop it."
  (interactive)
  (nebgit--stash-at-point "pop" "stash pop"))

(defun nebgit-stash-apply ()
  "Apply the stash at point, or the newest one, and keep it."
  (interactive)
  (nebgit--stash-at-point "apply" "stash apply"))

(defun nebgit-stash-drop ()
  "Drop the stash at point; ask first."
  (interactive)
  (let ((item (nebgit-status-item)))
    (nebgit--section (list item) 'stash)
    (unless (plist-get item :path)
      (user-error "Not on a stash"))
    (when (yes-or-no-p (format "Lose %s (%s)? " (plist-get item :path)
                               (nebgit-field (plist-get item :record) Subject)))
      (nebgit--stash-at-point "drop" "stash drop"))))

(provide 'nebgit-act)
;;; nebgit-act.el ends here
