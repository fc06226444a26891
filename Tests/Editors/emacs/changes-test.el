;;; changes-test.el --- Tests of marks, hunks, watches and the mode line  -*- lexical-binding: t; -*-

;;; Code:

(require 'test-support)
(require 'nebgit)
(require 'status-support)

(defun test-marks ()
  "Return the marks of the buffer: pairs of a line and a face."
  (sort (mapcar (lambda (overlay)
                  (cons (line-number-at-pos (overlay-start overlay))
                        (overlay-get overlay 'nebgit-face)))
                (cl-remove-if-not (lambda (overlay) (overlay-get overlay 'nebgit-changes))
                                  (overlays-in (point-min) (point-max))))
        (lambda (a b) (< (car a) (car b)))))

(defmacro test-with-file (name &rest body)
  "Run BODY in a buffer with the file NAME and `nebgit-changes-mode'."
  (declare (indent 1))
  `(save-window-excursion
     (find-file (expand-file-name ,name folder))
     (nebgit-changes-mode 1)
     (test-wait (and nebgit-changes--base nebgit-changes--tick))
     ,@body))

(defun test-need-watch ()
  "Skip the test on systems on which the server cannot watch."
  (test-outcome (nebgit-request 'history test-folder))
  (unless (nebgit-capability :watch)
    (ert-skip "The server cannot watch")))

(defun test-compare ()
  "Compare now what otherwise is compared when Emacs is idle, and return the marks."
  (setq nebgit-changes--tick nil)
  (nebgit-changes--compare (current-buffer))
  (test-wait nebgit-changes--tick)
  (test-marks))

(defun test-lines-file (name)
  "Commit the file NAME with the lines 1 to 20."
  (apply #'test-commit-file name "Lines" (mapcar #'number-to-string (number-sequence 1 20))))

(defun test-await-exit (process)
  "Wait until PROCESS has exited, and do not let Emacs call its sentinel."
  (while (process-live-p process)
    (call-process "sleep" nil nil nil "0.01")))

(ert-deftest changes-of-the-latest-comparison-are-marked ()
  (test-with-repository
    (test-with-file "a.txt"
      (setq nebgit-changes--tick nil)
      (dolist (base '("" "one\ntwo\nthree\n"))
        (nebgit-changes--set-base (current-buffer) base)
        (test-await-exit nebgit-changes--process))
      (test-wait nebgit-changes--tick)
      (should-not (test-marks)))))

(ert-deftest changes-against-the-latest-index-are-marked ()
  (test-with-repository
    (test-with-file "a.txt"
      (let (answers)
        (cl-letf (((symbol-function 'nebgit-changes--content)
                   (lambda (success &rest _) (push success answers))))
          (nebgit-changes-refresh)
          (nebgit-changes-refresh))
        (setq nebgit-changes--tick nil)
        (funcall (pop answers) "one\ntwo\nthree\n")
        (funcall (pop answers) "outdated")
        (test-wait nebgit-changes--tick)
        (should (equal (test-read nebgit-changes--base) "one\ntwo\nthree\n"))
        (should-not (test-marks))))))

(ert-deftest changes-mark-unsaved-text ()
  (test-with-repository
    (test-lines-file "long.txt")
    (test-with-file "long.txt"
      (should-not (test-marks))
      (goto-char (point-min))
      (insert "new\n")
      (forward-line 4)
      (insert "x")
      (forward-line 5)
      (delete-region (point) (progn (forward-line 2) (point)))
      (should (equal (test-compare)
                     '((1 . nebgit-added) (6 . nebgit-modified) (11 . nebgit-deleted))))
      (should (equal (nebgit-changes-counts) '(1 1 2)))
      (nebgit-changes-mode -1)
      (should-not (test-marks))
      (should-not nebgit-changes--base))))

(ert-deftest changes-mark-when-emacs-is-idle ()
  (test-with-repository
    (test-with-file "a.txt"
      (insert "new\n")
      (should nebgit-changes--timer)
      (timer-event-handler nebgit-changes--timer)
      (test-wait (equal (test-marks) '((1 . nebgit-added)))))))

(ert-deftest changes-follow-the-index ()
  (test-with-repository
    (test-need-watch)
    (test-with-file "a.txt"
      (insert "new\n")
      (let ((inhibit-message t)) (save-buffer))
      (should (test-compare))
      (test-wait (nebgit-watched-p (nebgit-root)))
      (test-git "add" "a.txt")
      (test-wait (not (test-marks)))
      (test-git "reset" "-q")
      (test-wait (test-marks)))))

(ert-deftest changes-of-untracked-files-are-not-marked ()
  (test-with-repository
    (test-need-watch)
    (test-write "new.txt" "x")
    (save-window-excursion
      (find-file "new.txt")
      (nebgit-changes-mode 1)
      (test-outcome (nebgit-request 'history folder))
      (should-not nebgit-changes--base)
      (should-not (test-marks))
      (test-wait (nebgit-watched-p (nebgit-root)))
      (test-git "add" "new.txt")
      (test-wait nebgit-changes--base))))

(ert-deftest changes-mode-needs-a-working-copy ()
  (test-with-folder
    (test-write "a.txt" "x")
    (save-window-excursion
      (find-file "a.txt")
      (nebgit-changes-mode 1)
      (should-not nebgit-changes-mode))))

(ert-deftest changes-turn-on-everywhere ()
  (test-with-repository
    (unwind-protect
        (save-window-excursion
          (global-nebgit-changes-mode 1)
          (find-file "a.txt")
          (run-hooks 'after-change-major-mode-hook)
          (should nebgit-changes-mode))
      (global-nebgit-changes-mode -1))))

(ert-deftest changes-ignore-line-ends-that-git-converts ()
  (test-with-repository
    (test-git "config" "core.autocrlf" "true")
    (test-git "rm" "-q" "--cached" "a.txt")
    (let ((coding-system-for-write 'utf-8-unix))
      (write-region "one\r\ntwo\r\n" nil (expand-file-name "a.txt" folder) nil 'silent))
    (test-git "-c" "core.safecrlf=false" "add" "a.txt")
    (test-with-file "a.txt"
      (should-not (test-marks))
      (goto-char (point-max))
      (insert "three\n")
      (should (equal (test-compare) '((3 . nebgit-added))))
      (goto-char (point-max))
      (forward-line -1)
      (nebgit-hunk-stage)
      (test-wait (equal (test-git "cat-file" "blob" ":a.txt") "one\ntwo\nthree"))
      (test-wait (not (test-marks))))))

(ert-deftest hunk-commands-go-show-stage-and-revert ()
  (test-with-repository
    (test-lines-file "long.txt")
    (test-with-file "long.txt"
      (goto-char (point-min))
      (insert "new\n")
      (goto-char (point-max))
      (insert "end")
      (test-compare)
      (goto-char (point-min))
      (nebgit-hunk-next)
      (should (looking-at-p "end"))
      (should-error (nebgit-hunk-next) :type 'user-error)
      (nebgit-hunk-show)
      (with-current-buffer "*nebgit hunk*"
        (should (equal (buffer-string) "+end\n\\ No newline at end of file\n")))
      (nebgit-hunk-stage)
      (test-wait (equal (test-git "diff" "--cached" "--numstat") "1\t0\tlong.txt"))
      (should (string-match-p "^\\+end\n" (test-git "diff" "--cached")))
      (test-wait (equal (test-marks) '((1 . nebgit-added))))
      (nebgit-hunk-previous)
      (should (bobp))
      (nebgit-hunk-revert)
      (should (looking-at-p "1\n"))
      (should-not (test-compare))
      (should (equal (test-git "diff" "--numstat") "0\t1\tlong.txt")))))

(ert-deftest hunk-of-deleted-lines-is-staged-and-reverted ()
  (test-with-repository
    (test-lines-file "long.txt")
    (test-with-file "long.txt"
      (delete-region (point-min) (progn (goto-char (point-min)) (forward-line 2) (point)))
      (should (equal (test-compare) '((1 . nebgit-deleted))))
      (nebgit-hunk-stage)
      (test-wait (equal (test-git "diff" "--cached" "--numstat") "0\t2\tlong.txt"))
      (test-wait (not (test-marks)))
      (delete-region (point-min) (point-max))
      (test-compare)
      (nebgit-hunk-revert)
      (should (equal (buffer-string)
                     (mapconcat (lambda (n) (format "%d\n" n)) (number-sequence 3 20) ""))))))

(ert-deftest hunk-of-a-file-that-git-filters-is-not-staged ()
  (test-with-repository
    (test-git "config" "filter.upper.clean" "tr a-z A-Z")
    (test-git "config" "filter.upper.smudge" "tr A-Z a-z")
    (test-write ".gitattributes" "up.txt filter=upper")
    (test-commit-file "up.txt" "Upper" "one" "two")
    (test-with-file "up.txt"
      (should-not (test-marks))
      (insert "new\n")
      (test-compare)
      (goto-char (point-min))
      (nebgit-hunk-stage)
      (test-wait (string-match-p "git filters this file" (test-messages)))
      (should (equal (test-git "diff" "--cached") "")))))

(ert-deftest hunk-commands-handle-hostile-names-and-bytes ()
  (test-with-repository
    (let ((name (decode-coding-string "b\344r \"x\"\n.txt" 'utf-8-unix)))
      (test-commit-file name "Bytes" (decode-coding-string "\344\366" 'utf-8-unix) "end")
      (test-with-file name
        (goto-char (point-max))
        (insert "more\n")
        (should (equal (test-compare) '((3 . nebgit-added))))
        (forward-line -1)
        (nebgit-hunk-stage)
        (test-wait (not (test-marks)))
        (should (equal (test-git "diff" "--cached" "--numstat" "-z")
                       (concat "1\t0\t" name "\0")))))))

(ert-deftest mode-line-shows-branch-and-changes ()
  (test-with-repository
    (test-need-watch)
    (test-with-file "a.txt"
      (nebgit-mode-line)
      (test-wait (equal (nebgit-mode-line) " main"))
      (insert "new\n")
      (test-compare)
      (should (equal (nebgit-mode-line) " main +1"))
      (test-git "checkout" "-q" "-b" "100%")
      (test-wait (equal (nebgit-mode-line) " 100%% +1")))))

(ert-deftest watch-refreshes-the-status-after-a-command-in-a-terminal ()
  (test-with-repository
    (test-need-watch)
    (save-window-excursion
      (nebgit-status)
      (test-wait (stringp (gethash folder nebgit-watch--roots)))
      (test-wait (string-match-p "working tree clean" (buffer-string)))
      (test-write "new.txt" "x")
      (test-wait (string-match-p "Untracked (1)" (buffer-string)))
      (test-git "add" "new.txt")
      (test-wait (string-match-p "Staged changes (1)" (buffer-string)))
      (test-git "commit" "-q" "-m" "Third")
      (test-wait (string-match-p "working tree clean" (buffer-string)))
      (kill-buffer)
      (test-wait (not (gethash folder nebgit-watch--roots))))))

(ert-deftest watch-shows-what-changed-before-it-started ()
  (test-with-repository
    (test-need-watch)
    (test-delaying-watch
      (save-window-excursion
        (nebgit-status)
        (test-wait (string-match-p "working tree clean" (buffer-string)))
        (test-write "new.txt" "x")
        (test-start-watch)
        (test-wait (string-match-p "Untracked (1)" (buffer-string)))))))

(ert-deftest watch-that-ends-shows-that-the-repository-is-gone ()
  (test-with-repository
    (test-need-watch)
    (save-window-excursion
      (nebgit-status)
      (test-wait (and (nebgit-watched-p folder) (not nebgit-status--refreshing)))
      (rename-file ".git" "moved")
      (test-wait (equal (test-text) "The working copy could not be read; g tries again\n"))
      (rename-file "moved" ".git")
      (nebgit-status-refresh)
      (test-wait (string-match-p "Branch:   main" (test-text))))))

(ert-deftest watch-starts-again-with-the-server ()
  (test-with-repository
    (test-need-watch)
    (save-window-excursion
      (nebgit-status)
      (test-wait (stringp (gethash folder nebgit-watch--roots)))
      (setq nebgit--unexpected-ends nil)
      (let ((old nebgit--connection))
        (signal-process (jsonrpc--process old) 'SIGKILL)
        (test-wait (and nebgit--connection (not (eq nebgit--connection old)))))
      (test-wait (and (nebgit-server-p) (stringp (gethash folder nebgit-watch--roots))))
      (test-wait (not nebgit-status--refreshing))
      (test-write "new.txt" "x")
      (test-wait (string-match-p "Untracked (1)" (buffer-string))))))

(provide 'changes-test)
;;; changes-test.el ends here
