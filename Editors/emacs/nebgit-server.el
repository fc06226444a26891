;;; nebgit-server.el --- Connection to the server of NEBGit  -*- lexical-binding: t; -*-

;; SPDX-License-Identifier: MIT

;;; Commentary:

;; Runs "nebsc serve" once for the whole Emacs and exchanges JSON-RPC messages with it.  Nothing
;; here waits: a call returns a task at once, and its functions run when the response arrives.  The
;; protocol is described in docs/server.md of NEBGit.

;;; Code:

(require 'cl-lib)
(require 'jsonrpc)
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
  "A call of the server: STATE is `waiting', `sent' or `done'."
  (state 'waiting) id method success failure)

(defvar nebgit--connection nil
  "Connection to the server; nil if none runs.")

(defvar nebgit--server nil
  "Result of \"initialize\", a plist; nil until the server is ready.")

(defvar nebgit--waiting nil
  "Functions that send the calls made before the server was ready, last one first.")

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
  (let ((task (make-nebgit-task :method method :success success
                                :failure (or failure #'nebgit--show-problem))))
    (condition-case problem
        (nebgit--when-ready (lambda () (nebgit--send task params)))
      (error (nebgit--finish task #'nebgit-task-failure
                             (list :code -1 :message (error-message-string problem)))))
    task))

(defun nebgit--when-ready (send)
  "Call SEND as soon as the server is ready."
  (if (nebgit-server-p)
      (funcall send)
    (push send nebgit--waiting)
    (unless (and nebgit--connection (jsonrpc-running-p nebgit--connection))
      (condition-case problem
          (nebgit--start)
        (error (setq nebgit--waiting nil)
               (signal (car problem) (cdr problem)))))))

(defun nebgit--send (task params)
  "Send TASK with PARAMS, unless it was cancelled."
  (when (eq (nebgit-task-state task) 'waiting)
    (let (nebgit--sent-id)
      (setf (nebgit-task-state task) 'sent)
      (jsonrpc-async-request
       nebgit--connection (nebgit-task-method task)
       (if (functionp params) (funcall params) params)
       :timeout nil
       :success-fn (lambda (result) (nebgit--finish task #'nebgit-task-success result))
       :error-fn (lambda (problem) (nebgit--finish task #'nebgit-task-failure problem)))
      (setf (nebgit-task-id task) nebgit--sent-id))))

(defun nebgit--finish (task which value)
  "End TASK, and pass VALUE to the function in the slot WHICH, an accessor.
An error in the function is shown, so that it does not keep other messages from
being read."
  (unless (eq (nebgit-task-state task) 'done)
    (setf (nebgit-task-state task) 'done)
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
    (jsonrpc-async-request
     nebgit--connection 'initialize
     (list :clientInfo (list :name "Emacs" :version emacs-version)
           :capabilities (or nebgit-client-capabilities (make-hash-table)))
     :timeout nil
     :success-fn (nebgit--ready-function nebgit--connection)
     :error-fn #'nebgit--show-problem)))

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
      (let ((waiting (nreverse nebgit--waiting)))
        (setq nebgit--waiting nil)
        (run-hook-wrapped 'nebgit-server-started-hook
                          (lambda (function) (nebgit--guarded function) nil))
        (dolist (send waiting)
          (nebgit--guarded send))))))

(defun nebgit--ended (connection)
  "Note that the process of CONNECTION ended; restart it if that was unexpected."
  (when (eq connection nebgit--connection)
    (let ((status (process-exit-status (jsonrpc--process connection)))
          (restart (and (not nebgit--stopping) (nebgit--may-restart-p))))
      (setq nebgit--connection nil
            nebgit--server nil)
      (run-hooks 'nebgit-server-ended-hook)
      (unless nebgit--stopping
        (message "NEBGit: the server ended with status %s; %s" status
                 (if restart "restarted" "the next command starts it again")))
      (if restart
          (nebgit--guarded #'nebgit--start)
        (setq nebgit--waiting nil)))))

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

(defun nebgit--stop-at-exit ()
  "End the server before Emacs exits; wait for at most a second."
  (let ((connection nebgit--connection)
        (inhibit-message t)
        (limit (+ (float-time) 1)))
    (ignore-errors
      (nebgit-stop)
      (while (and connection (jsonrpc-running-p connection) (< (float-time) limit))
        (accept-process-output (jsonrpc--process connection) 0.05)))))

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
