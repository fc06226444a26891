;;; nebgit-request.el --- Requests and records of NEBGit  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; Requests, their outcomes and records as Lisp data.  docs/requests.md of NEBGit lists the types,
;; docs/json.md the members.
;;
;; A name that is not UTF-8 is a string with raw bytes, as Emacs reads it from a folder.

;;; Code:

(require 'nebgit-advice)
(require 'nebgit-server)
(require 'nebgit-trust)

(defconst nebgit-types
  '((create-branch . 1) (delete-branch . 2) (ignore . 4) (remove . 5) (copy . 10) (move . 11)
    (checkout . 14) (remotes . 24) (create-repository . 27) (clone . 29) (fetch . 37)
    (merge-base . 39) (state . 1000) (history . 1001) (content . 1002) (annotation . 1003)
    (changes . 1004) (stage . 1005) (unstage . 1006) (discard . 1007) (references . 1008)
    (stash . 1009) (operation . 1010) (commit . 1011) (publish . 1012) (integrate . 1013)
    (pick . 1014) (tag . 1015) (tree . 1019) (finish . 1020))
  "Names that this package uses for the types of requests.")

(defconst nebgit--changing-types
  '(create-branch delete-branch ignore remove copy move checkout create-repository fetch stage
    unstage discard stash commit publish integrate pick tag finish)
  "Types after which the state of the repository may be another one.")

(defvar nebgit-changed-hook nil
  "Functions to call with the top folder of a repository after a change.")

(defvar nebgit-ended-hook nil
  "Functions to call with the error of a request, or nil, and its id.")

(defvar nebgit--tasks nil
  "Running tasks that the user asked for, last one first.")

(defvar nebgit--progress-functions (make-hash-table :test #'equal)
  "Functions of the values of progress, by token.")

(defvar nebgit--last-token 0
  "Number of the last token of progress.")

;;; Records

(defmacro nebgit-field (record name)
  "Return the field NAME, a symbol such as `ObjectID', of RECORD."
  `(plist-get ,record ,(nebgit--key name)))

(eval-and-compile
  (defun nebgit--key (name)
    "Return the keyword of the field NAME of a record."
    (intern (format ":NEBSourceControlOperation%sKey" name))))

(defun nebgit-decode (value)
  "Return the JSON value VALUE as a string that may have raw bytes.
VALUE is a string or an object with the member \"base64\"."
  (if (listp value)
      (decode-coding-string (base64-decode-string (plist-get value :base64)) 'utf-8-unix)
    value))

(defmacro nebgit-name (record name)
  "Return the field NAME of RECORD, which may not be UTF-8; nil if it is absent."
  `(let ((record ,record))
     (or (let ((bytes (nebgit-field record ,(intern (format "%sBytes" name)))))
           (and bytes (nebgit-decode bytes)))
         (nebgit-field record ,name))))

(defun nebgit-list (array)
  "Return the vector ARRAY, or nil, as a list."
  (append array nil))

(defun nebgit-encode (value)
  "Return VALUE for JSON.
A string with raw bytes becomes an object with the member \"base64\", a list
an array."
  (cond
   ((and (stringp value) (string-match-p "[^\0-\x10ffff]" value))
    (list :base64 (base64-encode-string (encode-coding-string value 'utf-8-unix) t)))
   ((consp value) (vconcat (mapcar #'nebgit-encode value)))
   ((stringp value) (substring-no-properties value))
   (t value)))

;;; Requests

(defun nebgit-root (&optional folder)
  "Return the top folder of the working copy that has FOLDER.
FOLDER is by default the current one.
Nil outside a working copy and for remote files."
  (let* ((folder (or folder default-directory))
         (top (and (not (file-remote-p folder))
                   (locate-dominating-file folder ".git"))))
    (and top (file-name-as-directory (expand-file-name top)))))

(defun nebgit-need-root ()
  "Return `nebgit-root', or signal a `user-error'."
  (or (nebgit-root)
      (user-error "Not in the working copy of a git repository: %s"
                  (abbreviate-file-name default-directory))))

(defun nebgit-request (type root &rest members)
  "Return a request of TYPE for the working copy ROOT.
TYPE is one of `nebgit-types'.  MEMBERS are keywords and values: `:files',
`:from', `:to' (revisions), `:destination', `:limits', `:background', and
options such as `:Amend'.  Members that are nil are left out."
  (let ((names '((:from . :startingRevision) (:to . :endingRevision)))
        (others '(:files :destination :limits :background :remote :repositoryToAuthenticate))
        (request (list :type (alist-get type nebgit-types)))
        (options nil))
    (when root
      (let ((tree (list :location (nebgit-encode (directory-file-name root)))))
        (setq request (append request (list :sourceTree tree)
                              (and (not (memq type '(create-repository clone)))
                                   (nebgit-inspected-p root)
                                   (list :trust "inspect"))))
        (when (memq type '(fetch publish integrate))
          (setq request (append request (list :repositoryToAuthenticate tree))))))
    (cl-loop for (name value) on members by #'cddr
             when value
             do (let ((member (or (alist-get name names) (car (memq name others)))))
                  (setq value (if (memq member '(nil :files :startingRevision :endingRevision
                                                 :destination))
                                  (nebgit-encode value)
                                value))
                  (if member
                      (setq request (append request (list member value)))
                    (setq options (append options (list (nebgit--option name) value))))))
    (if options (append request (list :options options)) request)))

(defun nebgit--option (name)
  "Return the keyword of the option NAME of a request."
  (intern (format ":NEBSourceControlRequestOption%s" (substring (symbol-name name) 1))))

(cl-defun nebgit-perform (request &key success failure records title)
  "Carry out REQUEST, and return its `nebgit-task'.
SUCCESS gets the list of records and the outcome.  FAILURE gets the error of
the outcome, or a plist with `:code' and `:message', and the outcome or nil; by
default `nebgit-show-error'.  RECORDS, if given, gets lists of records while
git runs, and SUCCESS gets none.  With TITLE, the progress is shown under that
name, and `nebgit-cancel' ends the request."
  (let ((tokens (nebgit--new-tokens records title))
        (failure (or failure #'nebgit-show-error))
        task)
    (setq task
          (nebgit-call
           'sourceControl/perform
           (lambda () (append (nebgit--permitted request) tokens))
           (lambda (outcome)
             (setf (nebgit-task-problem task) (plist-get outcome :error))
             (nebgit--forget task tokens (nebgit-task-problem task))
             (nebgit--deliver request outcome success failure))
           (lambda (problem)
             (nebgit--forget task tokens problem)
             (nebgit--after request)
             (funcall failure problem nil))))
    (unless (eq (nebgit-task-state task) 'done)
      (when title
        (push task nebgit--tasks))
      (when (or (nebgit--changes-p request) (eq (nebgit--type request) 'clone))
        (push task nebgit--changing)))
    task))

(defun nebgit--type (request)
  "Return the name of the type of REQUEST, see `nebgit-types'."
  (car (rassq (plist-get request :type) nebgit-types)))

(defun nebgit--permitted (request)
  "Return REQUEST without the members that the server does not support.
Signal an error if it cannot inspect a repository that is not trusted."
  (when (and (plist-get request :trust) (not (nebgit-capability :trust)))
    (error "This nebsc cannot inspect repositories; install a newer one"))
  (if (and (plist-get request :background) (not (nebgit-capability :background)))
      (cl-loop for (name value) on request by #'cddr
               unless (eq name :background) append (list name value))
    request))

(defun nebgit--deliver (request outcome success failure)
  "Pass OUTCOME of REQUEST to SUCCESS or FAILURE."
  (nebgit--after request)
  (let ((problem (plist-get outcome :error)))
    (if problem
        (funcall failure problem outcome)
      (when success
        (funcall success (nebgit-list (plist-get outcome :result)) outcome)))))

(defun nebgit--after (request)
  "Run `nebgit-changed-hook' if REQUEST may have changed the repository."
  (let ((location (plist-get (plist-get request :sourceTree) :location)))
    (when (and location (nebgit--changes-p request))
      (run-hook-with-args 'nebgit-changed-hook
                          (file-name-as-directory (nebgit-decode location))))))

(defun nebgit--changes-p (request)
  "Return non-nil if REQUEST may change the repository."
  (let* ((name (nebgit--type request))
         (options (plist-get request :options))
         (action (plist-get options (nebgit--option :Action))))
    (and (memq name nebgit--changing-types)
         (not (plist-get options (nebgit--option :DryRun)))
         (not (and (eq name 'stash) (member action '(nil "list" "show")))))))

;;; Progress

(defun nebgit--new-tokens (records title)
  "Return the members of a request that reports RECORDS and progress under TITLE."
  (append
   (when records
     (let ((token (cl-incf nebgit--last-token)))
       (puthash token (lambda (value) (funcall records (nebgit-list (plist-get value :records))))
                nebgit--progress-functions)
       (list :partialResultToken token)))
   (when title
     (let ((token (cl-incf nebgit--last-token)))
       (puthash token (lambda (value) (nebgit--show-progress title value))
                nebgit--progress-functions)
       (list :workDoneToken token)))))

(defun nebgit--forget (task tokens problem)
  "Forget TASK, which has ended with PROBLEM or nil, and its TOKENS."
  (when task
    (run-hook-with-args 'nebgit-ended-hook problem (nebgit-task-id task)))
  (setq nebgit--tasks (delq task nebgit--tasks))
  (cl-loop for (_ token) on tokens by #'cddr
           do (remhash token nebgit--progress-functions)))

(defun nebgit--show-progress (title value)
  "Show VALUE, the progress of the request called TITLE.
Show nothing beside a question, such as that for a password."
  (when (and (equal (plist-get value :kind) "report")
             (not (active-minibuffer-window)))
    (let ((message-log-max nil))
      (message "NEBGit: %s, %s (M-x nebgit-cancel stops it)" title (plist-get value :message)))))

(defun nebgit--progress (params)
  "Pass PARAMS of a notification of progress to the function of its token."
  (when-let ((function (gethash (plist-get params :token) nebgit--progress-functions)))
    (funcall function (plist-get params :value))))

(setf (alist-get '$/progress nebgit-notification-functions) #'nebgit--progress)

(defun nebgit-cancel ()
  "Cancel the last request that can show progress, such as a push."
  (interactive)
  (if nebgit--tasks
      (nebgit-cancel-task (car nebgit--tasks))
    (message "NEBGit: no request is running")))

;;; Errors

(defun nebgit-error-class (problem)
  "Return the class of the error PROBLEM of an outcome, a string or nil."
  (plist-get problem :class))

(defun nebgit-error-text (problem)
  "Return a sentence or two that describe PROBLEM.
Git's own text follows on lines of its own if only that has the reason."
  (let ((sentences (nebgit--error-sentences problem))
        (output (and (member (nebgit-error-class problem) nebgit-advice-output-classes)
                     (string-trim (nebgit-decode (or (plist-get problem :text) ""))))))
    (if (and output (not (string-match-p (regexp-quote output) sentences)))
        (concat sentences "\n" output)
      sentences)))

(defun nebgit--error-sentences (problem)
  "Return a sentence or two that describe PROBLEM."
  (let ((parts (or (delq nil (list (plist-get problem :localizedDescription)
                                   (or (nebgit-advice (nebgit-error-class problem))
                                       (plist-get problem :localizedRecoverySuggestion))))
                   (list (or (plist-get problem :message) "unknown error")))))
    (string-join parts "  ")))

(defun nebgit-show-error (problem &optional _outcome)
  "Show PROBLEM; keep git's own text in the buffer *nebgit errors*."
  (let ((text (plist-get problem :text)))
    (unless (nebgit-cancelled-p problem)
      (when text
        (with-current-buffer (get-buffer-create "*nebgit errors*")
          (goto-char (point-max))
          (insert (format-time-string "%F %T ") (nebgit--error-sentences problem) "\n"
                  (nebgit-decode text) "\n")))
      (message "NEBGit: %s" (nebgit-error-text problem)))))

;;; Pages

(defun nebgit-open (request size success &optional failure)
  "Open a cursor for REQUEST with pages of SIZE records; return a `nebgit-task'.
SUCCESS gets the list of records, the cursor, which is nil after the last page,
and the outcome, which is nil before it.  FAILURE is as of `nebgit-perform'."
  (nebgit--page 'sourceControl/open
                (lambda () (list :request (nebgit--permitted request) :pageSize size))
                success failure))

(defun nebgit-next (cursor size success &optional failure)
  "Read the next page of CURSOR.
SIZE, SUCCESS and FAILURE are as of `nebgit-open'.  The server forgets a cursor
that is idle for long, see `nebgit-cursor-closed-p'."
  (nebgit--page 'sourceControl/next
                (lambda ()
                  (list :cursor (if (nebgit--cursor-p cursor) (cdr cursor) "") :pageSize size))
                success failure))

(defun nebgit--cursor-p (cursor)
  "Return non-nil if CURSOR is one of the running server.
It is a pair of a connection and a name; other servers use the same names."
  (eq (car cursor) nebgit--connection))

(defun nebgit-cursor-closed-p (problem)
  "Return non-nil if PROBLEM of `nebgit-next' is that the server forgot the cursor."
  (eql (plist-get problem :code) -32602))

(defun nebgit--page (method params success failure)
  "Call METHOD with PARAMS, and pass its page to SUCCESS, or its error to FAILURE."
  (let ((failure (or failure #'nebgit-show-error)))
    (nebgit-call method params
                 (lambda (page)
                   (let* ((name (plist-get page :cursor))
                          (outcome (plist-get page :outcome))
                          (problem (plist-get outcome :error)))
                     (funcall success (nebgit-list (plist-get page :records))
                              (and name (cons nebgit--connection name)) outcome)
                     (when problem (funcall failure problem outcome))))
                 (lambda (problem) (funcall failure problem nil)))))

(defun nebgit-close (cursor)
  "Close CURSOR, so that its git ends."
  (when (and (nebgit-server-p) (nebgit--cursor-p cursor))
    (nebgit-call 'sourceControl/close (list :cursor (cdr cursor)) #'ignore #'ignore)))

;;; Long work

(defun nebgit-in-slices (step)
  "Call STEP until its result is nil, for some milliseconds at a time.
The first slice runs at once, the others from timers, between which Emacs
handles keys."
  (let ((end (+ (float-time) 0.005)) (more t))
    (while (and (setq more (funcall step))
                (< (float-time) end)))
    (when more
      (run-at-time 0.001 nil #'nebgit-in-slices step))))

;;; Waiting, for callers that must return a result

(defcustom nebgit-wait-limit 5
  "Longest time in seconds that a command of VC waits for the server."
  :type 'number
  :group 'nebgit)

(defun nebgit-wait (request &optional limit)
  "Carry out REQUEST, and return its outcome when it has ended.
After LIMIT seconds, by default `nebgit-wait-limit', cancel it and signal an
error; also on \\[keyboard-quit].  An error of the outcome is not signalled."
  (let* ((end (+ (float-time) (or limit nebgit-wait-limit)))
         (outcome nil)
         (problem nil)
         (task (nebgit-perform request
                               :success (lambda (_ value) (setq outcome value))
                               :failure (lambda (error-object value)
                                          (setq outcome value problem error-object)))))
    (unwind-protect
        (while (and (not outcome) (not problem) (< (float-time) end))
          (accept-process-output nil 0.05))
      (unless (or outcome problem)
        (nebgit-cancel-task task)))
    (cond
     (outcome outcome)
     (problem (error "NEBGit: %s" (nebgit-error-text problem)))
     (t (error "NEBGit: git did not end within %s seconds" (or limit nebgit-wait-limit))))))

(provide 'nebgit-request)
;;; nebgit-request.el ends here
