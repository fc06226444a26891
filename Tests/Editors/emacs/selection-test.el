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
      ;; git deletes the file before it writes the new one.
      (test-wait (equal (ignore-error file-missing (test-read "c.txt")) "1\n2\n3\nfour\nfive\n"))
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

;; The last line of a text is the only one that can lack a newline: no other may follow it, whether
;; the chosen lines are applied or taken back.

(defun test-write-text (text)
  "Write TEXT to the file c.txt."
  (write-region text nil (expand-file-name "c.txt" test-folder) nil 'silent))

(defmacro test-with-changed-end (&rest body)
  "Run BODY in the status of a file whose last line, without an end, changed.
The diff of c.txt is shown."
  (declare (indent 0))
  `(test-with-repository
     (test-write-text "one\ntwo")
     (test-git "add" "c.txt")
     (test-git "commit" "-q" "-m" "Third")
     (test-write-text "one\n2\nthree")
     (test-with-status
       (test-go "modified   c.txt")
       (test-until "^@@" (nebgit-status-toggle-diff))
       ,@body)))

(ert-deftest selection-refuses-lines-that-would-end-without-a-newline ()
  (test-with-changed-end
    (test-select "+three" "+three")
    (should (string-match-p "no newline" (cadr (should-error (nebgit-stage) :type 'user-error))))
    (test-select "-two" "+2")
    (nebgit-stage)
    (test-wait (equal (test-git "cat-file" "blob" ":c.txt") "one\n2"))))

(defconst test-texts-around-the-end
  '(("one\ntwo" . "one\n2\nthree") ("one\ntwo" . "one\n2\nthree\n")
    ("one\ntwo\n" . "one\n2\nthree") ("one\ntwo\nthree" . "one") ("one" . "zero\none\n2"))
  "Pairs of texts that differ at their end.")

(defun test-lines-after (lines chosen reverse)
  "Return what LINES of a hunk are in the file after the CHOSEN ones are applied.
REVERSE means that they are taken back.  Each has its newline if it has one."
  (let ((removed (if reverse ?+ ?-)))
    (cl-loop for (line next) on lines
             for is-chosen in chosen
             unless (or (string-prefix-p "\\" line)
                        (and (nebgit-diff-change-p line) (eq (eq (aref line 0) removed) is-chosen)))
             collect (concat (substring line 1)
                             (unless (string-prefix-p "\\" (or next "")) "\n")))))

(defun test-choices (lines)
  "Return all lists that say for each of LINES, of a hunk, whether it is chosen."
  (if (not lines)
      '(nil)
    (cl-loop for rest in (test-choices (cdr lines))
             collect (cons nil rest)
             when (nebgit-diff-change-p (car lines)) collect (cons t rest))))

(defun test-apply-choice (file chosen reverse)
  "Apply the CHOSEN lines of the hunk of FILE, a record of type 1004, to c.txt.
REVERSE means that they are taken back.  Check the text, or that it is refused."
  (let* ((hunk (elt (nebgit-field file Hunks) 0))
         (expected (test-lines-after (nebgit-diff-lines hunk) chosen reverse))
         (patch (expand-file-name ".git/patch" test-folder)))
    (if (cl-notevery (lambda (line) (string-suffix-p "\n" line)) (butlast expected))
        (should-error (nebgit-diff-part hunk chosen reverse) :type 'user-error)
      (write-region (nebgit-diff-patch file (list (nebgit-diff-part hunk chosen reverse)) reverse t)
                    nil patch nil 'silent)
      (apply #'test-git "apply" (append (and reverse '("--reverse")) (list patch)))
      (should (equal (test-read "c.txt") (string-join expected))))))

(ert-deftest selection-joins-no-lines-at-the-end-of-a-file ()
  (test-with-repository
    (cl-loop
     for (old . new) in test-texts-around-the-end
     do (test-write-text old)
     (test-git "add" "c.txt")
     (test-write-text new)
     (let ((file (car (test-outcome (nebgit-request 'changes folder)))))
       (dolist (chosen (test-choices (nebgit-diff-lines (elt (nebgit-field file Hunks) 0))))
         (when (memq t chosen)
           (dolist (reverse '(nil t))
             (ert-info ((format "%S to %S, chosen: %S, reverse: %S" old new chosen reverse))
               (test-write-text (if reverse new old))
               (test-apply-choice file chosen reverse)))))))))

(ert-deftest selection-refuses-to-take-back-the-last-line-without-its-successors ()
  (test-with-changed-end
    (test-select "-two" "-two")
    (test-answering t
      (should-error (nebgit-discard) :type 'user-error)
      (should-not questions))
    (should (equal (test-read "c.txt") "one\n2\nthree"))))

(ert-deftest selection-says-that-the-region-has-no-change ()
  (test-with-open-diff '("1" "2" "3") '("1" "2" "3" "four")
    (test-select " 2" " 3")
    (should-error (nebgit-stage) :type 'user-error)
    (should (equal (test-git "diff" "--cached" "--name-only") ""))))

(provide 'selection-test)
;;; selection-test.el ends here
