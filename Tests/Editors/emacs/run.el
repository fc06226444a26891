;;; run.el --- Runs the tests of the package for Emacs  -*- lexical-binding: t; -*-

;;; Commentary:

;; emacs --batch -Q -l Tests/Editors/emacs/run.el [PATTERN]
;; with the server in the environment variable NEBSC.  Runs the tests whose names match PATTERN.

;;; Code:

(let* ((tests (file-name-directory load-file-name))
       (package (expand-file-name "../../../Editors/emacs" tests))
       (load-prefer-newer t))
  (push tests load-path)
  (push package load-path)
  (setenv "NEBGIT_EMACS_FOLDER" package)
  (setenv "NEBGIT_TESTS_FOLDER" tests)
  (require 'test-support)
  (test-prepare)
  (dolist (file (directory-files tests t "-test\\.el\\'"))
    (load file nil t t))
  (setq ert-batch-backtrace-right-margin 200)
  (ert-run-tests-batch-and-exit (or (pop command-line-args-left) t)))

;;; run.el ends here
