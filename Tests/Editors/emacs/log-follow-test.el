;;; log-follow-test.el --- Tests of the log after changes of the history  -*- lexical-binding: t; -*-

;;; Code:

(require 'status-support)
(require 'log-test (expand-file-name "log-test" (getenv "NEBGIT_TESTS_FOLDER")))

(defmacro test-with-log (&rest body)
  "Run BODY in the log of a repository with 300 commits, when its changes are watched."
  (declare (indent 0))
  `(test-with-repository
     (test-many-commits 298)
     (save-window-excursion
       (nebgit-log)
       (test-wait (eql (length (test-log-subjects)) 100))
       (test-wait (and (nebgit-watched-p folder) (not nebgit-log--reading)))
       ,@body)))

(defun test-log-commit ()
  "Return the subject of the commit at point."
  (nebgit-field (nebgit-log-commit) Subject))

(ert-deftest log-shows-a-commit-made-in-a-terminal ()
  (test-with-log
    (test-git "commit" "-q" "--allow-empty" "-m" "New")
    (test-wait (equal (car (test-log-subjects)) "New"))
    (should (bobp))))

(ert-deftest log-shows-a-commit-made-before-the-watch-started ()
  (test-with-repository
    (test-need-watch)
    (test-delaying-watch
      (save-window-excursion
        (nebgit-log)
        (test-wait (string-match-p "Second" (test-text)))
        (test-git "commit" "-q" "--allow-empty" "-m" "Third")
        (test-start-watch)
        (test-wait (equal (car (test-log-subjects)) "Third"))))))

(ert-deftest log-shows-a-commit-made-in-emacs ()
  (test-with-log
    (search-forward "Commit 250 ")
    (should-not (stringp (test-outcome (nebgit-request 'commit folder :Message "New"
                                                      :AllowEmptyCommit t))))
    (test-wait (equal (car (test-log-subjects)) "New"))
    (should (equal (test-log-commit) "Commit 250"))
    (should (equal (window-point) (point)))))

(ert-deftest log-shows-a-new-tag ()
  (test-with-log
    (test-git "tag" "v1")
    (test-wait (string-match-p "(HEAD, main, v1)" (test-text)))))

(ert-deftest log-of-a-repository-that-is-not-watched-follows-own-requests ()
  (test-with-log
    (puthash folder nil nebgit-watch--roots)
    (nebgit-act 'tag (list :destination "v1" :from "HEAD") "tag")
    (test-wait (string-match-p "(HEAD, main, v1)" (test-text)))))

(ert-deftest log-is-not-read-again-when-a-file-is-staged ()
  (test-with-log
    (let* (changes
           (reads 0)
           (nebgit-changed-hook (append nebgit-changed-hook
                                        (list (lambda (_ &optional what) (push what changes))))))
      (cl-letf (((symbol-function 'nebgit-log-refresh) (lambda () (setq reads (1+ reads)))))
        (test-write "a.txt" "changed")
        (should (listp (test-outcome (nebgit-request 'stage folder :files '("a.txt")))))
        (test-wait (and (memq nil changes)
                        (cl-some (lambda (what) (member "index" what)) changes))))
      (should (eql reads 0)))))

(ert-deftest log-waits-while-older-commits-are-read ()
  (test-with-log
    (nebgit-log-more)
    (test-wait (eql (length (test-log-subjects)) 200))
    (search-forward "Commit 150 ")
    (test-git "commit" "-q" "--allow-empty" "-m" "New")
    (test-wait nebgit-log-follow--outdated)
    (should (equal (test-log-commit) "Commit 150"))
    (nebgit-log-next)
    (run-hooks 'post-command-hook)
    (should nebgit-log-follow--outdated)
    (goto-char (point-min))
    (run-hooks 'post-command-hook)
    (test-wait (equal (car (test-log-subjects)) "New"))
    (should-not nebgit-log-follow--outdated)))

(ert-deftest log-goes-to-its-start-if-the-commit-at-point-is-gone ()
  (test-with-log
    (search-forward "Commit 297 ")
    (test-git "reset" "-q" "--hard" "HEAD^")
    (test-wait (equal (car (test-log-subjects)) "Commit 296"))
    (should (bobp))))

(provide 'log-follow-test)
;;; log-follow-test.el ends here
