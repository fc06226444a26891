;;; log-test.el --- Tests of log, commit and blame  -*- lexical-binding: t; -*-

;;; Code:

(require 'test-support)
(require 'nebgit)

(defun test-graph (&rest commits)
  "Return the drawing of COMMITS, lists of an id and its parents."
  (let (lanes lines)
    (dolist (commit commits)
      (let ((result (nebgit-graph-add lanes (car commit) (cdr commit))))
        (setq lanes (car result))
        (push (concat (nth 1 result) " " (car commit)) lines)
        (dolist (line (nth 2 result)) (push line lines))))
    (nreverse lines)))

(ert-deftest graph-draws-a-line ()
  (should (equal (test-graph '("c" "b") '("b" "a") '("a")) '("* c" "* b" "* a"))))

(ert-deftest graph-draws-a-merge ()
  (should (equal (test-graph '("m" "a" "b") '("a" "r") '("b" "r") '("r"))
                 '("* m" "|\\" "* | a" "| * b" "|/" "* r"))))

(ert-deftest graph-draws-branches-without-a-common-end ()
  (should (equal (test-graph '("x" "r") '("y" "s") '("r") '("s"))
                 '("* x" "| * y" "* | r" " /" "* s"))))

(ert-deftest graph-draws-a-merge-of-three ()
  (should (equal (test-graph '("m" "a" "b" "c") '("a" "r") '("b" "r") '("c" "r") '("r"))
                 '("* m" "|\\" "|\\ \\" "* | | a" "| | * b" "|_|/" "| * c" "|/" "* r"))))

(ert-deftest graph-joins-lanes-that-are-apart ()
  (should (equal (test-graph '("a" "r") '("b" "s") '("c" "r") '("s" "r") '("r"))
                 '("* a" "| * b" "| | * c" "|_|/" "| * s" "|/" "* r"))))

(defun test-log-subjects ()
  "Return the subjects of the commits that the log shows."
  (let (subjects)
    (save-excursion
      (goto-char (point-min))
      (while (not (eobp))
        (let ((commit (get-text-property (point) 'nebgit-commit)))
          (when commit (push (nebgit-field commit Subject) subjects)))
        (forward-line 1)))
    (nreverse subjects)))

(defun test-many-commits (count)
  "Add COUNT commits to the repository, with git-fast-import(1)."
  (let ((default-directory test-folder)
        (id (test-git "rev-parse" "HEAD")))
    (with-temp-buffer
      (dotimes (n count)
        (insert (format "commit refs/heads/main\ncommitter A <a@b> %d +0000\ndata <<E\nCommit %d\nE\n"
                        (+ 1600000000 n) n)
                (if (zerop n) (format "from %s\n" id) "")))
      (should (eql 0 (call-process-region (point-min) (point-max) "git" nil nil nil
                                          "fast-import" "--quiet"))))))

(ert-deftest log-shows-a-graph-and-references ()
  (test-with-repository
    (test-git "checkout" "-q" "-b" "topic" "HEAD^")
    (test-git "commit" "-q" "--allow-empty" "-m" "On topic")
    (test-git "checkout" "-q" "main")
    (test-git "merge" "-q" "--no-edit" "topic")
    (test-git "tag" "v1")
    (save-window-excursion
      (nebgit-log)
      (test-wait (> (length (test-log-subjects)) 3))
      (should (string-match-p
               (concat "\\`\\* [0-9a-f]\\{10\\} (HEAD, main, v1) Merge branch 'topic'  Ann Example,"
                       " 2020-09-13 [0-9:]+\n|\\\\\n")
               (buffer-string)))
      (should-not nebgit-log--cursor)
      (should (string-match-p "(topic) On topic" (buffer-string))))))

(defun test-wait-log ()
  "Wait for a page of the log, which is read again when the watch starts."
  (test-wait (and nebgit-log--cursor (not nebgit-log--reading)
                  (not (eq (gethash default-directory nebgit-watch--roots) t)))))

(ert-deftest log-reads-pages-when-they-are-needed ()
  (test-with-repository
    (test-many-commits 500)
    (save-window-excursion
      (let ((nebgit-log-page 100))
        (nebgit-log)
        (test-wait-log)
        (should (= (length (test-log-subjects)) 100))
        (nebgit-log--read-near-end)
        (should-not nebgit-log--reading)
        (goto-char (point-max))
        (nebgit-log--read-near-end)
        (test-wait (= (length (test-log-subjects)) 200))
        (while nebgit-log--cursor
          (nebgit-log-more)
          (test-wait (not nebgit-log--reading)))
        (should (equal (test-log-subjects)
                       (append (cl-loop for n from 499 downto 0 collect (format "Commit %d" n))
                               '("Second" "First"))))))))

(ert-deftest log-closes-its-cursor ()
  (test-with-repository
    (test-many-commits 20)
    (save-window-excursion
      (let ((nebgit-log-page 10) cursor problem)
        (nebgit-log)
        (test-wait nebgit-log--cursor)
        (setq cursor nebgit-log--cursor)
        (kill-buffer)
        (nebgit-next cursor 10 #'ignore (lambda (error-object _) (setq problem error-object)))
        (test-wait problem)
        (should (nebgit-cursor-closed-p problem))))))

;; The server closes a cursor that was idle for some time.
(defmacro test-with-interrupted-log (&rest body)
  "Show two pages of a log with 400 commits, run BODY, and read it to its end.
Return the subjects that it shows."
  (declare (indent 0))
  `(test-with-repository
     (test-many-commits 398)
     (save-window-excursion
       (nebgit-log)
       (test-wait-log)
       (nebgit-log-more)
       (test-wait (eql (length (test-log-subjects)) 200))
       ;; There the log is not read again because of a change.
       (goto-char (point-max))
       ,@body
       (nebgit-log-more)
       (while (progn (test-wait (not nebgit-log--reading)) nebgit-log--cursor)
         (nebgit-log-more))
       (test-log-subjects))))

(defconst test-long-log
  (append (mapcar (lambda (n) (format "Commit %d" n)) (number-sequence 397 0 -1))
          '("Second" "First"))
  "Subjects of the log of `test-with-interrupted-log'.")

(ert-deftest log-goes-on-after-its-cursor-was-closed ()
  (should (equal test-long-log
                 (test-with-interrupted-log
                   (test-git "commit" "-q" "--allow-empty" "-m" "Newer")
                   (nebgit-close nebgit-log--cursor)))))

(ert-deftest log-goes-on-after-a-crash ()
  (let ((nebgit--unexpected-ends nil) other)
    (should (equal test-long-log
                   (test-with-interrupted-log
                     (let ((old nebgit--connection))
                       (signal-process (jsonrpc--process old) 'SIGKILL)
                       (test-wait (not (eq old nebgit--connection))))
                     (nebgit-open (nebgit-request 'history folder) 1
                                  (lambda (_ cursor __) (setq other cursor)))
                     (test-wait other))))
    (nebgit-close other)))

(ert-deftest log-goes-on-after-a-crash-while-a-page-is-read ()
  (let ((nebgit--unexpected-ends nil))
    (should (equal test-long-log
                   (test-with-interrupted-log
                     (let ((server (jsonrpc--process nebgit--connection)))
                       (nebgit-log-more)
                       (signal-process server 'SIGKILL)))))))

;; The first read fails then, as it is cancelled.
(ert-deftest log-that-is-read-twice-at-once-is-shown ()
  (test-with-repository
    (save-window-excursion
      (nebgit-log)
      (nebgit-log-refresh)
      (nebgit-log-refresh)
      (test-wait (equal (test-log-subjects) '("Second" "First"))))))

(ert-deftest log-of-a-rewritten-history-is-read-again ()
  (should (equal '("Only")
                 (test-with-interrupted-log
                   (nebgit-close nebgit-log--cursor)
                   (test-git "update-ref" "refs/heads/main"
                             (test-git "commit-tree" "-m" "Only" "HEAD^{tree}"))
                   (delete-directory ".git/objects/pack" t)))))

(ert-deftest log-of-a-file-follows-renames ()
  (test-with-repository
    (test-git "mv" "a.txt" "moved.txt")
    (test-git "commit" "-q" "-m" "Move")
    (save-window-excursion
      (find-file "moved.txt")
      (nebgit-log-file)
      (test-wait (test-log-subjects))
      (should (equal (test-log-subjects) '("Move" "First"))))))

(ert-deftest log-shows-a-commit ()
  (test-with-repository
    (test-write "a.txt" "one" "2" "three")
    (test-git "commit" "-q" "-a" "-m" "Change\n\nWith a body.")
    (save-window-excursion
      (nebgit-log)
      (test-wait (test-log-subjects))
      (nebgit-log-show)
      (with-current-buffer (test-wait (cl-find-if (lambda (buffer)
                                                    (with-current-buffer buffer
                                                      (and (derived-mode-p 'nebgit-revision-mode)
                                                           (> (buffer-size) 0))))
                                                  (buffer-list)))
        (should (string-match-p "\\`Commit:    [0-9a-f]\\{40\\}\n" (buffer-string)))
        (should (string-match-p "\n    Change\n\n    With a body\\.\n" (buffer-string)))
        (should (string-match-p "\nmodified a\\.txt, \\+1 -1\n" (buffer-string)))
        (should (string-match-p (concat "\ndiff --git a/a.txt b/a.txt\n--- a/a.txt\n\\+\\+\\+ b/a.txt\n"
                                        "@@ -1,3 \\+1,3 @@\n one\n-two\n\\+2\n three\n")
                                (buffer-string)))
        (search-forward "+2")
        (nebgit-revision-visit)
        (should (equal (buffer-file-name) (expand-file-name "a.txt" folder)))))))

(ert-deftest log-shows-the-first-commit ()
  (test-with-repository
    (save-window-excursion
      (with-current-buffer (nebgit-revision folder "HEAD^")
        (test-wait (string-match-p "\nadded a\\.txt, \\+3 -0\n" (buffer-string)))
        (should (string-match-p "\nnew file mode 100644\n--- /dev/null\n" (buffer-string)))))))

(ert-deftest log-picks-reverts-resets-and-tags ()
  (test-with-repository
    (test-git "checkout" "-q" "-b" "topic")
    (test-commit-file "c.txt" "Third" "c")
    (test-git "checkout" "-q" "main")
    (save-window-excursion
      (nebgit-log t)
      (test-wait (test-log-subjects))
      (search-forward "Third")
      (nebgit-log-cherry-pick)
      (test-wait (equal (test-git "log" "-1" "--format=%s") "Third"))
      (goto-char (point-min))
      (search-forward "Second")
      (nebgit-log-tag "v2")
      (test-wait (string-match-p "v2" (test-git "tag")))
      (nebgit-log-revert)
      (test-wait (equal (test-git "log" "-1" "--format=%s") "Revert \"Second\""))
      (test-write "a.txt" "changed")
      (cl-letf (((symbol-function 'yes-or-no-p)
                 (lambda (prompt) (should (equal prompt "Lose the changes of a.txt? ")))))
        (nebgit-log-reset "hard")
        (test-wait (equal (test-git "log" "-1" "--format=%s") "Second")))
      (should (equal (test-read "a.txt") "one\ntwo\nthree\n")))))

(ert-deftest blame-shows-commits-and-unsaved-text ()
  (test-with-repository
    (test-commit-file "a.txt" "Change" "one" "2" "three")
    (save-window-excursion
      (find-file "a.txt")
      (goto-char (point-max))
      (insert "four\n")
      (nebgit-blame)
      (test-wait (string-match-p "│ four\n\\'" (buffer-string)))
      (should (string-match-p
               (concat "\\`[0-9a-f]\\{8\\} 2020-09-13 Ann Example +│ one\n"
                       "[0-9a-f]\\{8\\} 2020-09-13 Ann Example +│ 2\n"
                       "[0-9a-f]\\{8\\} 2020-09-13 Ann Example +│ three\n"
                       "not committed +│ four\n\\'")
               (buffer-substring-no-properties (point-min) (point-max))))
      (should-error (nebgit-blame-show) :type 'user-error)
      (test-go-line 2)
      (nebgit-blame-before)
      (test-wait (string-match-p "│ two\n.*│ three\n\\'" (buffer-string)))
      (should (eql (line-number-at-pos) 2))
      (nebgit-blame-log)
      (test-wait (test-log-subjects))
      (should (equal (test-log-subjects) '("First"))))))

(ert-deftest blame-that-fails-leaves-no-window ()
  (test-with-repository
    (save-window-excursion
      (find-file "a.txt")
      (delete-file "a.txt")
      (setq test--messages nil)
      (nebgit-blame)
      (should (derived-mode-p 'nebgit-blame-mode))
      (test-wait (string-match-p "no such file" (test-messages)))
      (should-not (cl-find 'nebgit-blame-mode (buffer-list)
                           :key (lambda (buffer) (buffer-local-value 'major-mode buffer)))))))

;; So many lines are shown in several slices.
(ert-deftest blame-shows-long-files-in-full ()
  (test-with-repository
    (let ((lines (mapcar (apply-partially #'format "line %d") (number-sequence 1 5000))))
      (apply #'test-commit-file "long.txt" "Long" lines)
      (save-window-excursion
        (find-file "long.txt")
        (goto-char (point-min))
        (forward-line 2999)
        (nebgit-blame)
        (should (eq nebgit-blame--drawing nil))
        (test-wait (eql (count-lines (point-min) (point-max)) 5000))
        (should (string-match-p "│ line 5000\n\\'" (buffer-string)))
        (should (eql (line-number-at-pos) 3000))
        (should (eql (nebgit-blame--number (nebgit-blame--record)) 2999))))))

(defun test-go-line (number)
  "Go to the line NUMBER."
  (goto-char (point-min))
  (forward-line (1- number)))

(provide 'log-test)
;;; log-test.el ends here
