;;; trust-test.el --- Tests of repositories that are not trusted  -*- lexical-binding: t; -*-

;;; Code:

(require 'status-support)

(ert-deftest trust-inspects-repositories-elsewhere-until-they-are-trusted ()
  (test-with-repository
    (let ((trap (expand-file-name "trapped" folder))
          (nebgit-trusted-folders '("/nonexistent"))
          (nebgit-trust--roots nil))
      (test-write ".git/info/attributes" "a.txt filter=trap")
      (test-write ".git/info/exclude" "trapped")
      (test-git "config" "filter.trap.clean" (format "touch '%s'; cat" trap))
      ;; Of the same size, so that git has to compare the content.
      (test-write "a.txt" "ONE" "two" "three")
      (test-with-status
        (should (string-match-p (concat "\\`Not trusted: inspected only (M-x nebgit-trust); "
                                        "switched off: filter\\.trap\\.clean")
                                (test-text)))
        (test-go "modified   a.txt")
        (nebgit-stage)
        (test-wait (string-match-p "trust" (test-messages)))
        (test-wait-status)
        (should-not (file-exists-p trap))
        (should (equal (test-git "diff" "--cached" "--name-only") ""))
        (test-until "\\`Branch" (nebgit-trust))
        (test-wait (file-exists-p trap))
        (should-error (nebgit-trust) :type 'user-error)))))

(ert-deftest trust-names-what-is-switched-off-in-large-working-copies ()
  (test-with-repository
    (test-git "config" "filter.trap.clean" "cat")
    (dotimes (n 10)
      (test-write (format "new%d.txt" n) "new"))
    (let ((nebgit-trusted-folders '("/nonexistent"))
          (nebgit-trust--roots nil)
          (nebgit-status-limit 1))
      (test-with-status
        (should (string-match-p "^Untracked (3 or more)" (test-text)))
        (should (string-match-p "\\`.*; switched off: .*filter\\.trap\\.clean" (test-text)))))))

(ert-deftest trust-follows-the-setting ()
  (test-with-repository
    (let (nebgit-trust--roots)
      (should-not (nebgit-inspected-p folder))
      (let ((nebgit-trusted-folders (list (directory-file-name folder))))
        (should-not (nebgit-inspected-p folder))
        (should (nebgit-inspected-p "/elsewhere/")))
      (let ((nebgit-trusted-folders nil))
        (should (nebgit-inspected-p folder)))
      (let ((nebgit-trusted-folders (lambda (root) (equal root folder))))
        (should-not (nebgit-inspected-p folder))
        (should (nebgit-inspected-p "/elsewhere/"))))))

(provide 'trust-test)
;;; trust-test.el ends here
