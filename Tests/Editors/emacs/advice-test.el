;;; advice-test.el --- Tests of the advice after errors  -*- lexical-binding: t; -*-

;;; Code:

(require 'test-support)
(require 'nebgit)

(ert-deftest advice-is-for-classes-of-errors ()
  (let ((page (with-temp-buffer
                (insert-file-contents (expand-file-name "../../../docs/errors.md"
                                                        (getenv "NEBGIT_TESTS_FOLDER")))
                (buffer-string))))
    (dolist (class (append (mapcar #'car nebgit-advice) nebgit-advice-output-classes))
      (should (string-match-p (format "^| `%s` |" class) page)))))

(ert-deftest advice-names-keys-of-the-status ()
  (dolist (row nebgit-advice)
    (should-not (string-match-p "M-x\\|\\\\" (nebgit-advice (car row)))))
  (test-with-repository
    (should (equal (test-outcome (nebgit-request 'commit folder :Message "Nothing"))
                   "nothing-to-commit"))
    (nebgit-act 'commit '(:Message "Nothing"))
    (test-wait (string-match-p "Stage changes (s in the status), or commit all .* (c A)"
                               (test-messages)))
    (let ((nebgit-status-mode-map (make-sparse-keymap)))
      (define-key nebgit-status-mode-map (kbd "+") #'nebgit-stage)
      (should (string-match-p "(\\+ in the status)" (nebgit-advice "conflict"))))))

(ert-deftest advice-to-read-the-output-shows-it ()
  (test-with-repository
    (test-write-program ".git/hooks/pre-commit" "#!/bin/sh" "echo 'a.txt has tabs' >&2" "exit 1")
    (nebgit-act 'commit '(:Message "Tabs" :AllowEmptyCommit t))
    (test-wait (string-match-p "Fix what the hook reports.*\na.txt has tabs" (test-messages)))))

(provide 'advice-test)
;;; advice-test.el ends here
