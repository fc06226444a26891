;;; source-test.el --- Tests of the sources: warnings, documentation, lengths  -*- lexical-binding: t; -*-

;;; Code:

(require 'test-support)
(require 'checkdoc)

(defconst source-files (directory-files (getenv "NEBGIT_EMACS_FOLDER") t "\\`[^.].*\\.el\\'")
  "The files of the package.")

(ert-deftest source-compiles-without-warnings ()
  (dolist (file source-files)
    (test-with-folder
      (let ((target (expand-file-name (file-name-nondirectory file))))
        (copy-file file target)
        (with-temp-buffer
          (let ((status (call-process (expand-file-name invocation-name invocation-directory)
                                      nil t nil "--batch" "-Q" "-L" (getenv "NEBGIT_EMACS_FOLDER")
                                      "--eval" "(setq byte-compile-error-on-warn t)"
                                      "-f" "batch-byte-compile" target)))
            (should (equal (list file status (buffer-string)) (list file 0 "")))))))))

(ert-deftest source-is-checkdoc-clean ()
  (let (found)
    (dolist (file source-files)
      (with-current-buffer (find-file-noselect file)
        (let ((checkdoc-create-error-function
               (lambda (text start &rest _)
                 (push (format "%s:%s: %s" (file-name-nondirectory file)
                               (line-number-at-pos (or start (point))) text)
                       found)
                 nil)))
          (checkdoc-current-buffer t))
        (kill-buffer)))
    (should-not found)))

(defun source-long-definitions ()
  "Return the definitions in the current buffer that have more than 40 lines."
  (let (found)
    (goto-char (point-min))
    (while (re-search-forward "^(\\(cl-\\)?def\\(un\\|macro\\|method\\) \\(\\S-+\\)" nil t)
      (let ((name (match-string 3)) (begin (match-beginning 0)))
        (goto-char begin)
        (forward-sexp)
        (when (> (count-lines begin (point)) 40)
          (push name found))))
    found))

(ert-deftest source-has-short-functions-and-lines ()
  (dolist (file source-files)
    (with-temp-buffer
      (insert-file-contents file)
      (delay-mode-hooks (emacs-lisp-mode))
      (should (equal (cons file (source-long-definitions)) (list file)))
      (goto-char (point-min))
      (should-not (re-search-forward "^.\\{101,\\}$" nil t)))))

(defun source-run (folder form)
  "Evaluate FORM in a new Emacs with the packages in FOLDER; return what it prints."
  (with-temp-buffer
    (let ((status (call-process (expand-file-name invocation-name invocation-directory) nil t nil
                                "--batch" "-Q" "--eval"
                                (format "(setq package-user-dir %S package-archives nil)" folder)
                                "--eval" "(package-initialize)" "--eval" (prin1-to-string form))))
      (cons status (car (last (split-string (buffer-string) "\n" t)))))))

(ert-deftest source-installs-as-a-package ()
  (test-with-repository
    (let ((packages (expand-file-name "packages" folder))
          (package (getenv "NEBGIT_EMACS_FOLDER")))
      (should (eql 0 (car (source-run packages `(package-install-file ,package)))))
      (should (equal (source-run packages
                                 `(progn
                                    (global-nebgit-changes-mode 1)
                                    (find-file ,(expand-file-name "a.txt" folder))
                                    (run-hooks 'after-change-major-mode-hook)
                                    (message "%s" (list nebgit-changes-mode (featurep 'nebgit)
                                                        (commandp 'nebgit-hunk-stage)
                                                        (nebgit-mode-line)))))
                     '(0 . "(t t t )"))))))

(provide 'source-test)
;;; source-test.el ends here
