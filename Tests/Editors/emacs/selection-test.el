;;; selection-test.el --- Tests of lines and hunks in the region  -*- lexical-binding: t; -*-

;;; Code:

(require 'status-support)

(defun test-select (from to)
  "Make the lines from the one with FROM to the one with TO the region."
  (test-go to)
  (forward-line 1)
  (set-mark (point))
  (test-go from)
  (setq transient-mark-mode t
        mark-active t))

(defmacro test-with-open-diff (lines changed &rest body)
  "Run BODY in the status with the diff of c.txt from LINES to CHANGED, lists."
  (declare (indent 2))
  `(test-with-repository
     (apply #'test-commit-file "c.txt" "Third" ,lines)
     (apply #'test-write "c.txt" ,changed)
     (test-with-status
       (test-go "modified   c.txt")
       (test-until "^@@" (nebgit-status-toggle-diff))
       ,@body)))

(ert-deftest selection-stages-and-unstages-the-lines-in-the-region ()
  (test-with-open-diff '("1" "2" "3") '("one" "two" "3" "four" "five")
    (test-select "+two" "+four")
    (test-until "Staged changes (1)" (nebgit-stage))
    (should (equal (test-git "cat-file" "blob" ":c.txt") "1\n2\ntwo\n3\nfour"))
    (test-go "Staged changes")
    (nebgit-status-next)
    (test-until "Staged changes (1)\nmodified   c\\.txt\n\\(.+\n\\)*\\+two" (nebgit-status-toggle-diff))
    (test-go "Staged changes")
    (search-forward "+two")
    (let ((begin (line-beginning-position)))
      (forward-line 1)
      (set-mark begin)
      (setq mark-active t)
      (nebgit-unstage))
    (test-wait (equal (test-git "cat-file" "blob" ":c.txt") "1\n2\n3\nfour"))
    (should (equal (test-read "c.txt") "one\ntwo\n3\nfour\nfive\n"))))

(ert-deftest selection-discards-the-lines-in-the-region ()
  (test-with-open-diff '("1" "2" "3") '("one" "2" "3" "four" "five")
    (test-select "-1" "+one")
    (test-answering t
      (nebgit-discard)
      (test-wait (equal (test-read "c.txt") "1\n2\n3\nfour\nfive\n"))
      (should (equal (car questions) "Discard these lines of c.txt (2 changed lines)? ")))))

(ert-deftest selection-acts-on-the-hunks-in-the-region ()
  (let* ((numbers (mapcar #'number-to-string (number-sequence 1 40)))
         (changed (append '("first") (butlast (cdr numbers)) '("last"))))
    (test-with-open-diff numbers changed
      (test-select "+first" "-40")
      (test-until "Staged changes (1)" (nebgit-stage))
      (should (equal (test-git "diff" "--cached" "--numstat") "1\t1\tc.txt"))
      (should (equal (test-git "diff" "--numstat") "1\t1\tc.txt")))))

(ert-deftest selection-acts-on-lines-and-files-of-one-region ()
  (test-with-repository
    (test-write "a.txt" "one" "two" "three" "four" "five")
    (test-write "b.txt" "B")
    (test-with-status
      (test-go "modified   a.txt")
      (test-until "^@@" (nebgit-status-toggle-diff))
      (test-select "+five" "b.txt")
      (test-until "Staged changes (2)" (nebgit-stage))
      (should (equal (test-git "cat-file" "blob" ":a.txt") "one\ntwo\nthree\nfive"))
      (should (equal (test-git "cat-file" "blob" ":b.txt") "B")))))

(ert-deftest selection-unstages-lines-of-a-new-file ()
  (test-with-repository
    (test-write "new.txt" "1" "2" "3")
    (test-git "add" "new.txt")
    (test-with-status
      (test-go "added      new.txt")
      (test-until "^@@" (nebgit-status-toggle-diff))
      (test-select "+2" "+2")
      (nebgit-unstage)
      (test-wait (equal (test-git "cat-file" "blob" ":new.txt") "1\n3")))))

(ert-deftest selection-refuses-lines-that-would-end-without-a-newline ()
  (test-with-repository
    (write-region "one\ntwo" nil (expand-file-name "c.txt" folder) nil 'silent)
    (test-git "add" "c.txt")
    (test-git "commit" "-q" "-m" "Third")
    (write-region "one\n2\nthree" nil (expand-file-name "c.txt" folder) nil 'silent)
    (test-with-status
      (test-go "modified   c.txt")
      (test-until "^@@" (nebgit-status-toggle-diff))
      (test-select "+three" "+three")
      (should (string-match-p "no newline" (cadr (should-error (nebgit-stage) :type 'user-error))))
      (test-select "-two" "+2")
      (nebgit-stage)
      (test-wait (equal (test-git "cat-file" "blob" ":c.txt") "one\n2")))))

(ert-deftest selection-says-that-the-region-has-no-change ()
  (test-with-open-diff '("1" "2" "3") '("1" "2" "3" "four")
    (test-select " 2" " 3")
    (should-error (nebgit-stage) :type 'user-error)
    (should (equal (test-git "diff" "--cached" "--name-only") ""))))

(provide 'selection-test)
;;; selection-test.el ends here
