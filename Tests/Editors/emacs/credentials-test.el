;;; credentials-test.el --- Tests of questions for passwords  -*- lexical-binding: t; -*-

;;; Code:

(require 'test-support)
(require 'nebgit)

(defun test-copy (result)
  "Return a copy of RESULT, whose value is cleared after use."
  (and result (list :value (copy-sequence (plist-get result :value)))))

(defmacro test-asked (params &rest body)
  "Pass a question with PARAMS to the client, run BODY, and return the list of answers."
  (declare (indent 1))
  `(let (answers (nebgit-credentials--refused nil) (nebgit-credentials--given nil))
     (nebgit-credentials--ask ,params "credentials-1" (lambda (result)
                                                        (push (test-copy result)
                                                              answers)))
     ,@body
     answers))

(defconst test-password
  '(:kind "password" :prompt "Password for 'https://ann@host': " :url "https://host" :user "ann")
  "Params of a question for a password.")

(defmacro test-with-auth-source (text &rest body)
  "Run BODY with a file of auth-source that contains TEXT."
  (declare (indent 1))
  `(test-with-folder
     (test-write "authinfo" ,text)
     (let ((auth-sources (list (expand-file-name "authinfo" folder))))
       (auth-source-forget-all-cached)
       ,@body)))

(ert-deftest credentials-come-from-the-user ()
  (test-with-auth-source "machine other login ann password no"
    (cl-letf (((symbol-function 'read-passwd)
               (lambda (prompt &rest _)
                 (should (equal prompt "Password for 'https://ann@host': "))
                 "se\303\244cret")))
      (should (equal (test-asked test-password) '((:value "se\303\244cret")))))))

(ert-deftest credentials-come-from-auth-source-first ()
  (test-with-auth-source "machine host login ann port https password secret"
    (cl-letf (((symbol-function 'read-passwd) (lambda (&rest _) (error "Asked"))))
      (should (equal (test-asked test-password) '((:value "secret"))))
      (should (equal (test-asked '(:kind "name" :prompt "Username: " :url "https://host"))
                     '((:value "ann")))))))

(defun test-known (host request)
  "Return what auth-source knows for REQUEST, an id, of a password for HOST."
  (nebgit-credentials--known (list :kind "password" :url (concat "https://" host) :user "ann"
                                   :request request)))

(ert-deftest credentials-that-were-refused-are-asked-for ()
  (test-with-auth-source "machine host login ann password secret
machine other login ann password more
machine third login ann password most"
    (let ((nebgit-credentials--refused nil) (nebgit-credentials--given nil))
      (should (equal (test-known "host" 1) "secret"))
      (should (equal (test-known "other" 2) "more"))
      (should (equal (test-known "third" 3) "most"))
      (run-hook-with-args 'nebgit-ended-hook nil 1)
      (run-hook-with-args 'nebgit-ended-hook '(:class "credentials-refused") 2)
      (run-hook-with-args 'nebgit-ended-hook '(:class "cancelled") 3)
      (should (equal (test-known "host" 4) "secret"))
      (should-not (test-known "other" 5))
      (should (equal (test-known "third" 6) "most")))))

(ert-deftest credentials-of-a-request-that-ended-are-forgotten ()
  (test-with-repository
    ;; The server runs before the first request that counts.
    (test-outcome (nebgit-request 'history folder))
    (let ((nebgit-credentials--given nil))
      (dolist (request (list (nebgit-request 'history folder)
                             (nebgit-request 'history folder :from "nosuch")
                             (nebgit-request 'history folder :NoSuchOption t)))
        (let* (done
               (end (lambda (&rest _) (setq done t)))
               (task (nebgit-perform request :success end :failure end)))
          (test-wait (nebgit-task-id task))
          (push (cons (nebgit-task-id task) '(("password" "https://host" nil)))
                nebgit-credentials--given)
          (test-wait done)
          (should-not nebgit-credentials--given))))))

(ert-deftest credentials-can-be-declined ()
  (test-with-auth-source ""
    (cl-letf (((symbol-function 'read-passwd) (lambda (&rest _) (signal 'quit nil))))
      (should (equal (test-asked test-password) '(nil))))))

(ert-deftest credentials-for-unknown-hosts-are-a-yes-or-no ()
  (cl-letf (((symbol-function 'yes-or-no-p)
             (lambda (prompt)
               (should (equal prompt "The key is x.\nContinue connecting? "))
               t)))
    (should (equal (test-asked '(:kind "hostKey" :prompt "The key is x.
Continue connecting (yes/no/[fingerprint])? "))
                   '((:value "yes"))))))

(ert-deftest credentials-are-asked-without-progress-beside-them ()
  (dolist (asking '(t nil))
    (setq test--messages nil)
    (cl-letf (((symbol-function 'active-minibuffer-window) (lambda () asking)))
      (nebgit--show-progress "push" '(:kind "report" :message "2 s")))
    (should (eq asking (not (string-match-p "push, 2 s" (test-messages)))))))

(ert-deftest credentials-are-asked-one-after-the-other ()
  (test-with-auth-source ""
    (let (order)
      (cl-letf (((symbol-function 'read-passwd)
                 (lambda (prompt &rest _)
                   (push prompt order)
                   (when (equal prompt "first")
                     (nebgit-credentials--ask '(:kind "token" :prompt "second") "credentials-2"
                                              (lambda (_) (push 'answered order)))
                     (nebgit-credentials--ask '(:kind "token" :prompt "withdrawn") "credentials-3"
                                              #'error)
                     (nebgit-credentials--withdraw '(:id "credentials-3")))
                   (copy-sequence "x"))))
        (test-asked '(:kind "token" :prompt "first"))
        (should (equal (reverse order) '("first" "second" answered)))))))

(ert-deftest credentials-for-a-server-that-ended-are-not-asked-for ()
  (test-with-auth-source ""
    (let (order)
      (cl-letf (((symbol-function 'read-passwd)
                 (lambda (prompt &rest _)
                   (push prompt order)
                   (nebgit-credentials--ask '(:kind "token" :prompt "second") "credentials-2"
                                            #'error)
                   (run-hooks 'nebgit-server-ended-hook)
                   (copy-sequence "x"))))
        (test-asked '(:kind "token" :prompt "first"))
        (should (equal order '("first")))))))

(ert-deftest credentials-reach-a-server-that-asks ()
  (test-with-repository
    (test-outcome (nebgit-request 'history folder))
    (unless (nebgit-capability :credentials)
      (ert-skip "The server cannot ask"))
    (let* ((script (expand-file-name "http-server.py" (getenv "NEBGIT_TESTS_FOLDER")))
           (process (make-process :name "http" :buffer (generate-new-buffer " *http*") :noquery t
                                  :command (list "python3" script folder)))
           questions)
      (unwind-protect
          (let ((port (with-current-buffer (process-buffer process)
                        (test-wait (and (string-match "\\([0-9]+\\)\n" (buffer-string))
                                        (match-string 1 (buffer-string)))))))
            (test-git "remote" "add" "origin" (format "http://127.0.0.1:%s/.git" port))
            (cl-letf* (((symbol-function 'read-string)
                        (lambda (prompt &rest _) (push prompt questions) "ann"))
                       ((symbol-function 'read-passwd)
                        (lambda (prompt &rest _) (push prompt questions) (copy-sequence "secret")))
                       (auth-sources nil)
                       (default-directory folder))
              (nebgit-fetch)
              (test-wait (string-match-p "NEBGit: fetched from origin" (test-messages)))
              (should (equal (length questions) 2))
              (should (equal (test-git "rev-parse" "origin/main") (test-git "rev-parse" "main")))))
        (delete-process process)))))

(provide 'credentials-test)
;;; credentials-test.el ends here
