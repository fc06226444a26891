;;; nebgit-server.el --- Connection to the server of NEBGit  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; Runs "nebsc serve" once for the whole Emacs and exchanges JSON-RPC messages with it.  Nothing
;; here waits: a call returns a task at once, and its functions run when the response arrives.  The
;; protocol is described in docs/server.md of NEBGit.

;;; Code:

(require 'cl-lib)
(require 'jsonrpc)
(require 'nebgit-garbage)
(require 'subr-x)

(defgroup nebgit nil
  "Git through the server of NEBGit."
  :group 'tools
  :prefix "nebgit-"
  :link '(url-link "https://git-scm.com/docs"))

(defcustom nebgit-program "nebsc"
  "Program that serves the requests: a path, or a name to look up in the PATH."
  :type 'string)

(defcustom nebgit-restart-limit 3
  "How many times a minute the server is restarted after it ended unexpectedly."
  :type 'natnum)

(defvar nebgit-server-started-hook nil
  "Functions to call when a server is ready, also after a restart.")

(defvar nebgit-server-ended-hook nil
  "Functions to call when the server has ended, for whatever reason.")

(defvar nebgit-notification-functions nil
  "Alist of the methods of notifications, symbols, and functions of their params.")

(defvar nebgit-question-functions nil
  "Alist of the methods of requests of the server and functions that answer them.
A function gets the params, the id of the request, and a function to call with
the result, now or later.")

(defvar nebgit-client-capabilities nil
  "Plist of what this client can do, for the request \"initialize\".")

(defclass nebgit-connection (jsonrpc-process-connection) ()
  "Connection to one process of the server.")

(cl-defstruct nebgit-task
  "A call of the server with METHOD and PARAMS.
STATE is `waiting', `sent' or `done'.  PROBLEM is the error with which it ended, or nil."
  (state 'waiting) id method params success failure problem)

(defvar nebgit--connection nil
  "Connection to the server; nil if none runs.")

(defvar nebgit--server nil
  "Result of \"initialize\", a plist; nil until the server is ready.")

(defvar nebgit--waiting nil
  "Tasks that are sent when the server is ready, last one first.")

(defvar nebgit--changing nil
  "Running tasks that change something; Emacs exits when they have ended.")

(defvar nebgit--exit-limit 60
  "Longest time in seconds that the exit of Emacs waits for `nebgit--changing'.")

(defvar nebgit--unexpected-ends nil
  "Times of the unexpected ends of the server in the last minute.")

(defvar nebgit--sent-id nil
  "Id of the message that was sent last, bound while a call is sent.")

(defvar nebgit--stopping nil
  "Whether the end of the server is intended.")

;;; Calls

(defun nebgit-server-p ()
  "Return non-nil if the server is running and ready."
  (and nebgit--connection nebgit--server (jsonrpc-running-p nebgit--connection)))

(defun nebgit-capability (name)
  "Return what the server announces under the keyword NAME.
Nil before it is ready."
  (let ((value (plist-get (plist-get nebgit--server :capabilities) name)))
    (if (eq value :json-false) nil value)))

(defun nebgit-call (method params success &optional failure)
  "Call METHOD of the server with PARAMS; start the server if necessary.
SUCCESS gets the result, FAILURE a plist with `:code' and `:message'; without
FAILURE the message is shown.  Return a `nebgit-task', which
`nebgit-cancel-task' takes.

PARAMS may be a function of no arguments, which is called when the server is
ready."
  (let ((task (make-nebgit-task :method method :params params :success success
                                :failure (or failure #'nebgit--show-problem))))
    (if (nebgit-server-p)
        (nebgit--send task)
      (push task nebgit--waiting)
      (nebgit--start-for-waiting))
    task))

(defun nebgit--start-for-waiting ()
  "Start the server unless it exists; if it cannot start, fail the waiting tasks."
  (unless nebgit--connection
    (condition-case problem
        (nebgit--start)
      (error (nebgit--fail (nebgit--take-waiting) (error-message-string problem))))))

(defun nebgit--take-waiting ()
  "Return the tasks that wait for the server, first one first, which wait no more."
  (prog1 (nreverse nebgit--waiting)
    (setq nebgit--waiting nil)))

(defun nebgit--fail (tasks text)
  "End TASKS with an error whose message is TEXT."
  (dolist (task tasks)
    (nebgit--finish task #'nebgit-task-failure (list :code -1 :message text))))

(defun nebgit--send (task)
  "Send TASK, unless it was cancelled."
  (when (eq (nebgit-task-state task) 'waiting)
    (condition-case problem
        (let ((params (nebgit-task-params task))
              nebgit--sent-id)
          (setf (nebgit-task-state task) 'sent)
          (nebgit-garbage-request-begins)
          (jsonrpc-async-request
           nebgit--connection (nebgit-task-method task)
           (if (functionp params) (funcall params) params)
           :timeout nil
           :success-fn (lambda (result) (nebgit--finish task #'nebgit-task-success result))
           :error-fn (lambda (problem) (nebgit--finish task #'nebgit-task-failure problem)))
          (setf (nebgit-task-id task) nebgit--sent-id))
      (error (nebgit--fail (list task) (error-message-string problem))))))

(defun nebgit--finish (task which value)
  "End TASK, and pass VALUE to the function in the slot WHICH, an accessor.
An error in the function is shown, so that it does not keep other messages from
being read."
  (unless (eq (nebgit-task-state task) 'done)
    (when (eq (nebgit-task-state task) 'sent)
      (nebgit-garbage-request-ends))
    (setf (nebgit-task-state task) 'done
          nebgit--changing (delq task nebgit--changing))
    (when (eq which #'nebgit-task-failure)
      (setf (nebgit-task-problem task) value))
    (nebgit--guarded (funcall which task) value)))

(defun nebgit--guarded (function &rest arguments)
  "Call FUNCTION with ARGUMENTS; show an error as a message."
  (condition-case-unless-debug problem
      (apply function arguments)
    (error (message "NEBGit: %s" (error-message-string problem)))))

(defun nebgit-cancel-task (task)
  "Cancel TASK.
Its failure function is called, with code -32800, when its processes ended."
  (pcase (nebgit-task-state task)
    ('waiting (nebgit--finish task #'nebgit-task-failure '(:code -32800 :message "cancelled")))
    ('sent (when (nebgit-server-p)
             (jsonrpc-notify nebgit--connection '$/cancelRequest
                             (list :id (nebgit-task-id task)))))))

(defun nebgit-cancelled-p (problem)
  "Return non-nil if PROBLEM, an error, is that of a cancelled call."
  (eql (plist-get problem :code) -32800))

(defun nebgit--show-problem (problem)
  "Show PROBLEM, a JSON-RPC error, unless the call was cancelled."
  (unless (nebgit-cancelled-p problem)
    (message "NEBGit: %s" (plist-get problem :message))))

;;; Process

(defun nebgit--start ()
  "Start the server and introduce this client."
  (let ((program (executable-find nebgit-program)))
    (unless program
      (user-error "Cannot find the program %s; customize nebgit-program" nebgit-program))
    (setq nebgit--server nil
          nebgit--stopping nil
          nebgit--connection (nebgit--connect program))
    (condition-case problem
        (nebgit--introduce nebgit--connection)
      ;; If the process has ended already, `nebgit--ended' is called next.
      (error (when (jsonrpc-running-p nebgit--connection)
               (signal (car problem) (cdr problem)))))))

(defun nebgit--introduce (connection)
  "Send the first request to CONNECTION; end it if the server refuses."
  (jsonrpc-async-request
   connection 'initialize
   (list :clientInfo (list :name "Emacs" :version emacs-version)
         :capabilities (or nebgit-client-capabilities (make-hash-table)))
   :timeout nil
   :success-fn (nebgit--ready-function connection)
   :error-fn (lambda (problem)
               (nebgit--show-problem problem)
               (when (jsonrpc-running-p connection)
                 (kill-process (jsonrpc--process connection))))))

(defun nebgit--connect (program)
  "Run PROGRAM as a server and return the connection to it."
  (let ((folder (expand-file-name "~/")))
    (make-instance
     'nebgit-connection
     :name "nebgit"
     ;; The log of events formats every message, which takes longer than reading it.
     :events-buffer-scrollback-size 0
     :notification-dispatcher (lambda (_ method params) (nebgit--notify method params))
     :request-dispatcher (lambda (_ method params) (nebgit--question method params))
     :on-shutdown #'nebgit--ended
     :process (lambda ()
                (let ((default-directory folder)
                      (process-connection-type nil))
                  (make-process :name "nebgit" :command (list program "serve")
                                :coding 'utf-8-emacs-unix :noquery t :connection-type 'pipe
                                :stderr (get-buffer-create "*nebgit stderr*")))))))

(defun nebgit--ready-function (connection)
  "Return the function for the response to the introduction of CONNECTION."
  (lambda (result)
    (when (eq connection nebgit--connection)
      (setq nebgit--server result)
      (let ((waiting (nebgit--take-waiting)))
        (run-hook-wrapped 'nebgit-server-started-hook
                          (lambda (function) (nebgit--guarded function) nil))
        (mapc #'nebgit--send waiting)))))

(defun nebgit--ended (connection)
  "Note that the process of CONNECTION ended; restart it if that was unexpected."
  (when (eq connection nebgit--connection)
    (let ((status (process-exit-status (jsonrpc--process connection)))
          (restart (if nebgit--stopping nebgit--waiting (nebgit--may-restart-p))))
      (setq nebgit--connection nil
            nebgit--server nil)
      (run-hooks 'nebgit-server-ended-hook)
      (unless nebgit--stopping
        (message "NEBGit: the server ended with status %s; %s" status
                 (if restart "restarted" "the next command starts it again")))
      ;; From a timer: Emacs may miss the end of a process that was started in this function.
      (if restart
          (run-at-time 0 nil #'nebgit--start-for-waiting)
        (run-at-time 0 nil #'nebgit--fail (nebgit--take-waiting)
                     (format "the server ended with status %s" status))))))

(defun nebgit--may-restart-p ()
  "Count an end; return non-nil unless the last minute had too many of them."
  (let ((now (float-time)))
    (setq nebgit--unexpected-ends
          (cons now (cl-remove-if (lambda (time) (> (- now time) 60)) nebgit--unexpected-ends)))
    (<= (length nebgit--unexpected-ends) nebgit-restart-limit)))

(defun nebgit-stop ()
  "End the server and cancel its requests.
The next command brings it up again."
  (interactive)
  (when (and nebgit--connection (jsonrpc-running-p nebgit--connection))
    (setq nebgit--stopping t)
    (jsonrpc-async-request nebgit--connection 'shutdown nil :timeout nil
                           :success-fn #'ignore :error-fn #'ignore)
    (jsonrpc-notify nebgit--connection 'exit nil)))

;;; Exit of Emacs

(defun nebgit--await-changes ()
  "Wait for the end of `nebgit--changing', at most `nebgit--exit-limit' seconds."
  (let ((limit (+ (float-time) nebgit--exit-limit)))
    (when nebgit--changing
      (message "NEBGit: waiting for the end of a request"))
    (while (and nebgit--changing (< (float-time) limit))
      (accept-process-output nil 0.05))))

(defun nebgit--finish-before-exit ()
  "Wait for the tasks that change something; return whether Emacs may exit.
It may not if one of them failed: the message of a commit would be lost."
  (let ((tasks nebgit--changing))
    (nebgit--await-changes)
    (cond
     ((not nebgit--changing)
      (cl-every (lambda (task)
                  (or (not (nebgit-task-problem task))
                      (nebgit-cancelled-p (nebgit-task-problem task))))
                tasks))
     ((yes-or-no-p "A request of NEBGit is still running.  Cancel it and exit? ")
      (mapc #'nebgit-cancel-task nebgit--changing)
      t))))

(defun nebgit--stop-at-exit ()
  "End the server before Emacs exits, after `nebgit--changing'.
Do not wait for its end: Emacs, if a signal ends it, does not notice
that and would read the closed pipe without end."
  (with-local-quit (nebgit--await-changes))
  (let ((inhibit-message t))
    (ignore-errors (nebgit-stop))))

(add-hook 'kill-emacs-query-functions #'nebgit--finish-before-exit)
(add-hook 'kill-emacs-hook #'nebgit--stop-at-exit)

;;; Messages of the server

(defun nebgit--notify (method params)
  "Pass PARAMS of the notification METHOD to its function."
  (when-let ((function (alist-get method nebgit-notification-functions)))
    (nebgit--guarded function params)))

(defun nebgit--question (method params)
  "Return a function that replies to the request METHOD with PARAMS later.
`jsonrpc-connection-send' recognizes it."
  (let ((function (alist-get method nebgit-question-functions)))
    (unless function
      (jsonrpc-error :code -32601 :message (format "unknown method '%s'" method)))
    (lambda (id answer) (funcall function params id answer))))

(cl-defmethod jsonrpc-connection-send :around ((connection nebgit-connection) &rest message)
  "Send MESSAGE to CONNECTION, or let a person answer first.
Notes the id of a request.  If the result is a function, as of
`nebgit--question', it is called from a timer, outside the reader of messages,
with a function that sends the response."
  (let ((result (plist-get message :result))
        (id (plist-get message :id)))
    (cond
     ((functionp result)
      (run-at-time 0 nil #'nebgit--guarded result id
                   (lambda (answer)
                     (when (jsonrpc-running-p connection)
                       (jsonrpc-connection-send connection :id id :result answer)))))
     (t
      (setq nebgit--sent-id id)
      (cl-call-next-method)))))

(provide 'nebgit-server)
;;; nebgit-server.el ends here
