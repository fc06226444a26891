;;; server-test.el --- Tests of the connection to the server  -*- lexical-binding: t; -*-

;;; Code:

(require 'test-support)
(require 'nebgit)

(ert-deftest server-performs-requests-without-waiting ()
  (test-with-repository
    (let (records)
      (nebgit-perform (nebgit-request 'history folder)
                      :success (lambda (list _) (setq records list)))
      (should-not records)
      (test-wait records)
      (should (equal (mapcar (lambda (r) (nebgit-field r Subject)) records)
                     '("Second" "First"))))))

(ert-deftest server-reports-errors-of-outcomes ()
  (test-with-repository
    (should (equal (test-outcome (nebgit-request 'history folder :from "no-such-branch"))
                   "revision-unknown"))
    (nebgit-perform (nebgit-request 'history folder :from "no-such-branch"))
    (test-wait (string-match-p "NEBGit: There is no such branch" (test-messages)))))

(ert-deftest server-refuses-invalid-requests ()
  (test-with-repository
    (should (string-match-p "NoSuchOption"
                            (test-outcome (nebgit-request 'history folder :NoSuchOption t))))))

(ert-deftest server-sends-records-while-git-runs ()
  (test-with-repository
    (let (batches done)
      (nebgit-perform (nebgit-request 'history folder)
                      :records (lambda (records) (push records batches))
                      :success (lambda (records outcome)
                                 (should-not records)
                                 (setq done (plist-get outcome :recordCount))))
      (test-wait done)
      (should (eql done 2))
      (should (eql (length (apply #'append batches)) 2))
      (should (eql (hash-table-count nebgit--progress-functions) 0)))))

(ert-deftest server-reads-pages-by-cursors ()
  (test-with-repository
    (dotimes (n 3)
      (test-git "commit" "-q" "--allow-empty" "-m" (format "More %d" n)))
    (let (cursor pages outcome)
      (nebgit-open (nebgit-request 'history folder) 2
                   (lambda (records next _)
                     (setq cursor next)
                     (push (length records) pages)))
      (test-wait pages)
      (should (equal pages '(2)))
      (nebgit-next cursor 10 (lambda (records next last)
                               (setq cursor next outcome last)
                               (push (length records) pages)))
      (test-wait outcome)
      (should (equal pages '(3 2)))
      (should-not cursor))))

(ert-deftest server-cancels-a-request ()
  (test-with-repository
    (test-write-program ".git/hooks/pre-commit" "#!/bin/sh" "sleep 100")
    (test-write "a.txt" "changed")
    (let* (problem
           (task (nebgit-perform (nebgit-request 'commit folder :All t :Message "Never")
                                 :title "commit"
                                 :failure (lambda (error-object _) (setq problem error-object)))))
      (test-wait (nebgit-task-id task))
      (should (memq task nebgit--tasks))
      (nebgit-cancel)
      (test-wait problem)
      (should (nebgit-cancelled-p problem))
      (should-not nebgit--tasks)
      (should (equal (test-git "log" "-1" "--format=%s") "Second")))))

(ert-deftest server-restarts-after-a-crash ()
  (test-with-repository
    (should (test-outcome (nebgit-request 'history folder)))
    (let ((old nebgit--connection) ended)
      (setq nebgit--unexpected-ends nil)
      (nebgit-open (nebgit-request 'history folder) 1 #'ignore)
      (signal-process (jsonrpc--process old) 'SIGKILL)
      (nebgit-perform (nebgit-request 'history folder)
                      :success (lambda (&rest _) (setq ended t))
                      :failure (lambda (&rest _) (setq ended t)))
      (test-wait ended)
      (test-wait (and (nebgit-server-p) (not (eq nebgit--connection old))))
      (should (string-match-p "server ended with status 9; restarted" (test-messages)))
      (should (eql (length (test-outcome (nebgit-request 'history folder))) 2)))))

(ert-deftest server-is-not-restarted-for-ever ()
  (test-with-repository
    (let ((nebgit--unexpected-ends nil) (nebgit-restart-limit 0))
      (should (test-outcome (nebgit-request 'history folder)))
      (signal-process (jsonrpc--process nebgit--connection) 'SIGKILL)
      (test-wait (not nebgit--connection))
      (should (string-match-p "the next command starts it again" (test-messages)))
      (should (eql (length (test-outcome (nebgit-request 'history folder))) 2)))))

(ert-deftest server-stops-when-asked ()
  (test-with-repository
    (should (test-outcome (nebgit-request 'history folder)))
    (let ((process (jsonrpc--process nebgit--connection)))
      (nebgit-stop)
      (test-wait (not (process-live-p process)))
      (should (eql (process-exit-status process) 0))
      (test-wait (not nebgit--connection))
      (should (test-outcome (nebgit-request 'history folder))))))

(ert-deftest server-that-is-missing-is-named ()
  (let ((nebgit--connection nil) (nebgit--server nil) (nebgit--waiting nil)
        (nebgit-program "no-such-program") problem)
    (nebgit-call 'sourceControl/perform '(:type 15) #'ignore
                 (lambda (error-object) (setq problem (plist-get error-object :message))))
    (should (string-match-p "Cannot find the program no-such-program" problem))
    (should-not nebgit--waiting)))

(defun test-without-server (program)
  "End the server, and let PROGRAM be the next one."
  (nebgit-stop)
  (test-wait (not nebgit--connection))
  (setq nebgit--unexpected-ends nil
        nebgit-program program))

(ert-deftest server-that-cannot-start-fails-what-waits-for-it ()
  (test-with-repository
    (test-write-program ".git/broken" "#!/bin/sh" "exit 3")
    (unwind-protect
        (save-window-excursion
          (test-without-server (expand-file-name ".git/broken"))
          (should (string-match-p "ended with status 3"
                                  (test-outcome (nebgit-request 'history folder))))
          (should (eql (hash-table-count nebgit--progress-functions) 0))
          (nebgit-status)
          (test-wait (not nebgit-status--refreshing))
          (should-not (gethash folder nebgit-watch--roots))
          (test-without-server (getenv "NEBSC"))
          (nebgit-status-refresh)
          (test-wait (string-match-p "Branch:   main" (buffer-string))))
      (test-without-server (getenv "NEBSC")))))

(ert-deftest server-that-refuses-to-begin-is-not-waited-for ()
  (test-with-repository
    (test-write-program ".git/refusing" "#!/bin/sh"
                        "printf 'Content-Length: 70\\r\\n\\r\\n'"
                        (concat "printf '{\"jsonrpc\":\"2.0\",\"id\":1,\"error\":{\"code\":-32603,"
                                "\"message\":\"no memory\"}}'")
                        "cat >/dev/null")
    (unwind-protect
        (progn
          (test-without-server (expand-file-name ".git/refusing"))
          (should (stringp (test-outcome (nebgit-request 'history folder))))
          (should (string-match-p "NEBGit: no memory" (test-messages))))
      (test-without-server (getenv "NEBSC")))))

;;; Exit of Emacs

(defmacro test-with-commit (status &rest body)
  "Run BODY while a commit of a.txt, in `task', waits for the file .git/go.
The hook of git exits with STATUS."
  (declare (indent 1))
  `(test-with-repository
     (test-write-program ".git/hooks/pre-commit" "#!/bin/sh"
                         "until [ -e .git/go ]; do sleep 0.05; done" (format "exit %d" ,status))
     (test-write "a.txt" "changed")
     (let ((task (nebgit-perform (nebgit-request 'commit folder :All t :Message "At the end"))))
       (test-wait (nebgit-task-id task))
       (let ((timer (run-at-time 0.1 nil #'test-write (expand-file-name ".git/go"))))
         (unwind-protect
             (progn ,@body)
           ;; It would create the folder again.
           (cancel-timer timer))))))

(ert-deftest server-finishes-commits-before-emacs-exits ()
  (test-with-commit 0
    (should (run-hook-with-args-until-failure 'kill-emacs-query-functions))
    (should-not nebgit--changing)
    (should (equal (test-git "log" "-1" "--format=%s") "At the end"))
    (should (run-hook-with-args-until-failure 'kill-emacs-query-functions))))

(ert-deftest server-finishes-commits-before-emacs-is-killed ()
  (test-with-commit 0
    (nebgit--stop-at-exit)
    (test-wait (not nebgit--connection))
    (should (equal (test-git "log" "-1" "--format=%s") "At the end"))))

(ert-deftest server-lets-emacs-end-when-its-terminal-closes ()
  (test-with-repository
    (pcase-let ((`(,status ,shown)
                 (test-at-terminal
                  '("the server runs" "hang up") "--eval"
                  (prin1-to-string
                   `(progn
                      (setq nebgit-program ,nebgit-program)
                      (add-hook 'nebgit-server-started-hook
                                (lambda () (message "the server runs")))
                      (nebgit-perform (nebgit-request 'history ,folder)))))))
      (ert-info ((format "The terminal showed: %s" shown))
        (should (string-match-p "the server runs" shown))
        ;; The number of SIGHUP: Emacs ended by itself.
        (should (eql status 1))))))

(ert-deftest server-keeps-emacs-after-a-commit-that-failed ()
  (test-with-commit 1
    (should-not (run-hook-with-args-until-failure 'kill-emacs-query-functions))
    (should (equal (nebgit-error-class (nebgit-task-problem task)) "local-hook-refused"))
    (should (run-hook-with-args-until-failure 'kill-emacs-query-functions))))

(ert-deftest server-asks-before-a-commit-is-cancelled-at-exit ()
  (test-with-commit 0
    (let ((nebgit--exit-limit 0) (answers '(t nil)))
      (cl-letf (((symbol-function 'yes-or-no-p) (lambda (_) (pop answers))))
        (should (run-hook-with-args-until-failure 'kill-emacs-query-functions))
        (test-wait (nebgit-cancelled-p (nebgit-task-problem task)))))))

(ert-deftest server-gets-names-that-are-not-utf-8 ()
  (test-with-repository
    (let ((name (decode-coding-string "b\344r \"x\"\n.txt" 'utf-8-unix)))
      (test-write name "text")
      (let ((records (cdr (test-outcome (nebgit-request 'state folder)))))
        (should (equal (mapcar (lambda (record) (nebgit-name record Path)) records)
                       (list name))))
      (should-not (test-outcome (nebgit-request 'stage folder :files (list name))))
      (should (equal (test-git "diff" "--cached" "--name-only" "-z")
                     (decode-coding-string "b\344r \"x\"\n.txt\0" 'utf-8-unix))))))

(ert-deftest server-is-waited-for-with-a-limit ()
  (test-with-repository
    (should (eql (length (plist-get (nebgit-wait (nebgit-request 'history folder)) :result)) 2))
    (test-write-program ".git/hooks/pre-commit" "#!/bin/sh" "sleep 100")
    (test-write "a.txt" "changed")
    (should (string-match-p "did not end within 0.3 seconds"
                            (cadr (should-error
                                   (nebgit-wait (nebgit-request 'commit folder :All t :Message "x")
                                                0.3)))))))

(provide 'server-test)
;;; server-test.el ends here
