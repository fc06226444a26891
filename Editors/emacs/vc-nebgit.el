;;; vc-nebgit.el --- VC backend for NEBGit  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; (add-to-list 'vc-handled-backends 'NEBGit) before other backends for git makes the commands of VC
;; use NEBGit.  VC expects most results at once: these functions wait for the server, but no longer
;; than `nebgit-wait-limit' seconds.  `vc-dir', push and pull do not wait.

;;; Code:

(require 'log-edit)
(require 'vc)
(require 'nebgit)

(defcustom vc-nebgit-commit-limit 60
  "Longest time in seconds that a commit may take, with its hooks."
  :type 'number
  :group 'nebgit)

(defun vc-nebgit-revision-granularity ()
  "Return what a revision is of."
  'repository)

(defun vc-nebgit-checkout-model (_files)
  "Return how files become writable."
  'implicit)

(defun vc-nebgit-update-on-retrieve-tag ()
  "Return nil: the option `nebgit-revert-buffers' is for that."
  nil)

;;; Requests

(defun vc-nebgit-root (file)
  "Return the top folder of the working copy of FILE, or nil."
  (nebgit-root (if (file-directory-p file) file (file-name-directory (expand-file-name file)))))

(defalias 'vc-nebgit-responsible-p #'vc-nebgit-root)

(defun vc-nebgit--path (file root)
  "Return FILE as a path from ROOT."
  (file-relative-name (expand-file-name file) root))

(defun vc-nebgit--paths (files root)
  "Return FILES as paths from ROOT, nil if ROOT is among them."
  (let ((paths (mapcar (lambda (file) (directory-file-name (vc-nebgit--path file root))) files)))
    (unless (member "." paths) paths)))

(defun vc-nebgit--perform (limit type root &rest members)
  "Carry out a request of TYPE with MEMBERS in ROOT, and return its records.
Wait at most LIMIT seconds, nil for the usual time."
  (let* ((outcome (nebgit-wait (apply #'nebgit-request type root members) limit))
         (problem (plist-get outcome :error)))
    (if problem
        (error "NEBGit: %s" (nebgit-error-text problem))
      (nebgit-list (plist-get outcome :result)))))

(defun vc-nebgit--here (files)
  "Return the working copy of FILES, or of the current folder without any."
  (or (vc-nebgit-root (or (car files) default-directory))
      (error "Not in a working copy: %s" (or (car files) default-directory))))

;;; State

(defun vc-nebgit-registered (file)
  "Return non-nil if git tracks FILE."
  (let ((root (vc-nebgit-root file)))
    (and root
         (not (file-directory-p file))
         (memq (ignore-errors (vc-nebgit-state file))
               '(up-to-date edited added removed missing conflict)))))

(defun vc-nebgit-state (file)
  "Return the state of FILE, as `vc-state' does."
  (let ((root (vc-nebgit-root file)))
    (vc-nebgit--state-in (vc-nebgit--perform nil 'state root
                                             :files (list (vc-nebgit--path file root))
                                             :UntrackedFiles "all" :IgnoredFiles t)
                         file root)))

(defun vc-nebgit--state-in (records file root)
  "Return the state of FILE in ROOT that RECORDS, of type 1000, describe."
  (let* ((path (vc-nebgit--path file root))
         (record (cl-find path records :test #'equal :key (lambda (r) (nebgit-name r Path)))))
    (vc-file-setprop file 'vc-nebgit-head (car records))
    (cond (record (vc-nebgit--state-of record))
          ((file-exists-p file) 'up-to-date)
          (t 'unregistered))))

(defun vc-nebgit--state-of (record)
  "Return the state of VC that RECORD, of type 1000, describes."
  (let ((index (nebgit-field record IndexState))
        (file (nebgit-field record WorkingTreeState)))
    (pcase (nebgit-field record Kind)
      ("untracked" 'unregistered)
      ("ignored" 'ignored)
      ("conflict" 'conflict)
      (_ (cond ((equal index "deleted") 'removed)
               ((equal file "deleted") 'missing)
               ((equal index "added") 'added)
               (t 'edited))))))

(defun vc-nebgit-working-revision (file)
  "Return the id of HEAD, \"0\" for FILE before the first commit."
  (or (nebgit-field (car (vc-nebgit--perform nil 'state (vc-nebgit-root file)
                                             :files (list (vc-nebgit--path
                                                           file (vc-nebgit-root file)))
                                             :UntrackedFiles "no"))
                    ObjectID)
      "0"))

(defun vc-nebgit-mode-line-string (file)
  "Return the text about FILE for the mode line: state and branch."
  (let* ((state (vc-state file 'NEBGit))
         (head (vc-file-getprop file 'vc-nebgit-head))
         (branch (or (nebgit-name head Name)
                     (substring (or (nebgit-field head ObjectID) "unborn") 0 6))))
    (propertize (concat "NEBGit"
                        (pcase state ('up-to-date "-") ('added "@") ('conflict "!") (_ ":"))
                        (nebgit-printable branch))
                'help-echo (format "%s on branch %s" state branch))))

(defvar vc-nebgit--reading (make-hash-table :test #'equal)
  "What identifies the latest request of `vc-nebgit--changed', by working copy.")

(defun vc-nebgit--changed (root &rest _)
  "Read the states of the open files of ROOT again, for their mode lines.
This does not wait."
  (let ((files (vc-nebgit--open-files root))
        (token (list nil)))
    (when files
      (puthash root token vc-nebgit--reading)
      (nebgit-perform
       (nebgit-request 'state root :files (vc-nebgit--paths files root)
                       :UntrackedFiles "all" :IgnoredFiles t :background t)
       :success (lambda (records _)
                  (when (eq token (gethash root vc-nebgit--reading))
                    (dolist (file files)
                      (vc-nebgit--show-state file (vc-nebgit--state-in records file root)))))
       :failure #'ignore))))

(defun vc-nebgit--open-files (root)
  "Return the open files of this backend in the working copy ROOT.
Files of submodules and other repositories below ROOT are left out."
  (cl-loop for buffer in (buffer-list)
           for file = (buffer-file-name buffer)
           when (and file (string-prefix-p root file)
                     (eq (vc-file-getprop file 'vc-backend) 'NEBGit)
                     (equal (vc-nebgit-root file) root))
           collect file))

(defun vc-nebgit--show-state (file state)
  "Note that FILE has the STATE, and show that in the mode line of its buffer."
  (let ((buffer (get-file-buffer file)))
    (when buffer
      (with-current-buffer buffer
        (vc-file-setprop file 'vc-state state)
        (vc-file-setprop file 'vc-working-revision
                         (or (nebgit-field (vc-file-getprop file 'vc-nebgit-head) ObjectID) "0"))
        (if (memq state '(unregistered ignored))
            (progn (vc-file-clearprops file)
                   (setq vc-mode nil))
          (vc-mode-line file 'NEBGit))))))

(add-hook 'nebgit-changed-hook #'vc-nebgit--changed)

(defun vc-nebgit-dir-status-files (dir files update)
  "Pass the states of FILES in DIR, or of all that are not clean, to UPDATE.
This does not wait."
  (let ((root (vc-nebgit-root dir)) (buffer (current-buffer)))
    (nebgit-perform
     (nebgit-request 'state root :files (vc-nebgit--paths (or files (list dir)) root)
                     :IgnoredFiles (and files t))
     :success (lambda (records _)
                (when (buffer-live-p buffer)
                  (with-current-buffer buffer
                    (funcall update (vc-nebgit--dir-entries records root dir files) nil))))
     :failure (lambda (problem outcome)
                (nebgit-show-error problem outcome)
                (when (buffer-live-p buffer)
                  (with-current-buffer buffer (funcall update nil nil)))))))

(defun vc-nebgit--dir-entries (records root dir files)
  "Return the entries of `vc-dir' for RECORDS of ROOT in DIR.
FILES are listed even without a record."
  (let ((entries (cl-loop for record in (cdr records)
                          for file = (expand-file-name (nebgit-name record Path) root)
                          collect (list (file-relative-name file dir)
                                        (vc-nebgit--state-of record)))))
    (dolist (file files)
      (let ((name (file-relative-name (expand-file-name file dir) dir)))
        (unless (assoc name entries)
          (push (list name 'up-to-date) entries))))
    entries))

(defun vc-nebgit-dir-extra-headers (dir)
  "Return the lines about the branch of DIR for `vc-dir'."
  (let ((head (car (vc-nebgit--perform nil 'state (vc-nebgit-root dir) :UntrackedFiles "no"))))
    (concat (propertize "Branch     : " 'face 'font-lock-type-face)
            (or (nebgit-name head Name) "none, HEAD is detached")
            (let ((upstream (nebgit-name head Upstream)))
              (when upstream
                (concat "\n" (propertize "Upstream   : " 'face 'font-lock-type-face)
                        upstream (nebgit-status--distance head)))))))

(defun vc-nebgit-conflicted-files (dir)
  "Return the files of the working copy of DIR that are in conflict."
  (let ((root (vc-nebgit-root dir)))
    (cl-loop for record in (vc-nebgit--perform nil 'operation root)
             when (equal (nebgit-field record Kind) "conflict")
             collect (expand-file-name (nebgit-name record Path) root))))

;;; Changing commands

(defun vc-nebgit-create-repo ()
  "Create a repository in the current folder."
  (vc-nebgit--perform nil 'create-repository (expand-file-name default-directory)))

(defun vc-nebgit--with-paths (type files &rest members)
  "Carry out a request of TYPE with FILES and MEMBERS."
  (let ((root (vc-nebgit--here files)))
    (apply #'vc-nebgit--perform nil type root :files (vc-nebgit--paths files root) members)))

(defun vc-nebgit-register (files &optional _comment)
  "Stage FILES, which git does not track yet."
  (vc-nebgit--with-paths 'stage files))

(defun vc-nebgit-mark-resolved (files)
  "Stage FILES, whose conflicts are resolved."
  (vc-nebgit--with-paths 'stage files))

(defun vc-nebgit-unregister (file)
  "Unstage FILE, which is not committed yet."
  (vc-nebgit--with-paths 'unstage (list file)))

(defun vc-nebgit-delete-file (file)
  "Delete FILE, also in the index."
  (vc-nebgit--with-paths 'remove (list file)))

(defun vc-nebgit-rename-file (old new)
  "Rename OLD to NEW, also in the index."
  (let ((root (vc-nebgit--here (list old))))
    (vc-nebgit--perform nil 'move root :files (list (vc-nebgit--path old root))
                        :destination (vc-nebgit--path new root))))

(defun vc-nebgit--header (option)
  "Return the function of a header that is yes or no, for OPTION of a commit."
  (lambda (value)
    (and (equal (downcase value) "yes") (list option t))))

(defun vc-nebgit-checkin (files comment &optional _revision)
  "Commit FILES as they are, with the message COMMENT.
Its headers are those of `log-edit-mode': Summary, Author, Amend and Sign-Off."
  (pcase-let ((root (vc-nebgit--here files))
              (`(,message . ,options)
               (log-edit-extract-headers
                `(("Author" . :Author) ("Amend" . ,(vc-nebgit--header :Amend))
                  ("Sign-Off" . ,(vc-nebgit--header :SignOff)))
                comment)))
    (apply #'vc-nebgit--perform vc-nebgit-commit-limit 'commit root
           :files (vc-nebgit--paths files root)
           :All (and (not (vc-nebgit--paths files root)) t)
           :Message (string-trim message)
           options)))

(defun vc-nebgit-revert (file &optional contents-done)
  "Make FILE like HEAD; with CONTENTS-DONE only in the index."
  (let ((staged (memq (vc-nebgit-state file) '(added edited removed))))
    (when staged
      (vc-nebgit--with-paths 'unstage (list file)))
    (unless (or contents-done (eq (vc-nebgit-state file) 'unregistered))
      (vc-nebgit--with-paths 'discard (list file) :Force t))))

(defun vc-nebgit-checkout (file &optional revision)
  "Write the content that FILE has in REVISION into it; t or \"\" is HEAD."
  (let ((bytes (vc-nebgit--content file (and (stringp revision) revision)))
        (coding-system-for-write 'no-conversion))
    (write-region bytes nil file nil 'silent)))

(defun vc-nebgit--content (file revision)
  "Return the bytes of FILE in REVISION, by default HEAD."
  (let* ((root (vc-nebgit--here (list file)))
         (record (car (vc-nebgit--perform
                       nil 'content root :files (list (vc-nebgit--path file root))
                       :from (if (member revision '(nil "")) "HEAD" revision) :ApplyFilters t))))
    (encode-coding-string (or (nebgit-name record Content) "") 'utf-8-unix)))

(defun vc-nebgit-find-revision (file revision buffer)
  "Insert the content of FILE in REVISION into BUFFER."
  (let ((bytes (vc-nebgit--content file revision)))
    (with-current-buffer buffer
      (insert (string-to-multibyte bytes)))))

(defun vc-nebgit-push (prompt)
  "Push the current branch; PROMPT means to replace the branch of the remote."
  (let ((default-directory (vc-nebgit--here nil)))
    (nebgit-push prompt)))

(defun vc-nebgit-pull (_prompt)
  "Pull the upstream branch."
  (let ((default-directory (vc-nebgit--here nil)))
    (nebgit-pull)))

(defun vc-nebgit-merge-branch ()
  "Merge a branch into the current one."
  (let ((default-directory (vc-nebgit--here nil)))
    (nebgit-merge)))

(defun vc-nebgit-create-tag (dir name branch)
  "Create the tag NAME in DIR, or with BRANCH the branch, and switch to that."
  (let ((root (vc-nebgit-root dir)))
    (if (not branch)
        (vc-nebgit--perform nil 'tag root :destination name)
      (vc-nebgit--perform nil 'create-branch root :destination name)
      (vc-nebgit--perform nil 'checkout root :destination name))))

(defun vc-nebgit-retrieve-tag (dir name _update)
  "Switch the working copy of DIR to the branch or tag NAME."
  (vc-nebgit--perform nil 'checkout (vc-nebgit-root dir) :destination name))

(defun vc-nebgit-find-ignore-file (file)
  "Return the file that lists what is ignored beside FILE."
  (expand-file-name ".gitignore" (vc-nebgit-root file)))

(provide 'vc-nebgit)
(require 'vc-nebgit-history)
;;; vc-nebgit.el ends here
