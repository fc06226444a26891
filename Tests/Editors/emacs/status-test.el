;;; status-test.el --- Tests of the status and the commands that change something  -*- lexical-binding: t; -*-

;;; Code:

(require 'test-support)
(require 'nebgit)
(require 'status-support)

(ert-deftest status-shows-all-sections ()
  (test-with-repository
    (test-write "a.txt" "one" "2" "three")
    (test-write "b.txt" "B")
    (test-git "add" "b.txt")
    (test-write "new.txt" "x")
    (test-with-status
      (should (string-match-p "\\`Branch:   main at [0-9a-f]\\{10\\}\n" (test-text)))
      (should (string-match-p "\nUntracked (1)\nnew\\.txt\n" (test-text)))
      (should (string-match-p "\nUnstaged changes (1)\nmodified   a\\.txt\n" (test-text)))
      (should (string-match-p "\nStaged changes (1)\nmodified   b\\.txt\n" (test-text))))))

(ert-deftest status-on-the-command-line-is-that-of-the-file ()
  (test-with-repository
    (let ((default-directory "/"))
      (pcase-let ((`(,_ ,shown)
                   (test-at-terminal '("Nothing to commit" "hang up")
                                     "--eval" (format "(setq nebgit-program %S)" nebgit-program)
                                     "-f" "nebgit-status" (expand-file-name "a.txt" folder))))
        (should (string-match-p "Nothing to commit" shown))))))

;; From a timer, Emacs takes a dialog box, on a terminal a menu that "yes" does not answer.
(ert-deftest status-asks-in-the-minibuffer ()
  (test-with-repository
    (test-write "a.txt" "changed")
    (test-with-status
      (test-go "a.txt")
      (let ((question nil))
        (cl-letf (((symbol-function 'yes-or-no-p)
                   (lambda (prompt) (setq question (list prompt use-dialog-box)) nil)))
          (nebgit-discard)
          (test-wait question))
        (should (equal question '("Lose the changes of a.txt? " nil)))))))

(ert-deftest status-of-a-clean-repository-says-so ()
  (test-with-repository
    (test-with-status
      (should (string-match-p "Nothing to commit, working tree clean" (test-text))))))

(ert-deftest status-log-commit-and-blame-do-not-look-modified ()
  (test-with-repository
    (test-with-status
      (should-not (buffer-modified-p))
      (nebgit-log)
      (test-wait (string-match-p "First" (test-text)))
      (should-not (buffer-modified-p))
      (with-current-buffer (nebgit-revision folder "HEAD")
        (test-wait (string-match-p "^\\+b" (test-text)))
        (should-not (buffer-modified-p)))
      (with-current-buffer (nebgit-blame-open folder "a.txt" nil 1)
        (test-wait (string-match-p "three" (test-text)))
        (should-not (buffer-modified-p))))))

(ert-deftest status-stages-and-unstages-files ()
  (test-with-repository
    (test-write "a.txt" "changed")
    (test-write "new.txt" "x")
    (test-with-status
      (test-go "a.txt")
      (test-until "Staged changes (1)\nmodified   a\\.txt" (nebgit-stage))
      (test-go "Untracked (1)")
      (test-until "Staged changes (2)" (nebgit-stage))
      (should (equal (test-git "diff" "--cached" "--name-only") "a.txt\nnew.txt"))
      (test-go "new.txt")
      (test-until "Untracked (1)" (nebgit-unstage))
      (should-error (progn (test-go "new.txt") (nebgit-unstage)) :type 'user-error)
      (test-until (not "Staged") (nebgit-unstage-all))
      (should (equal (test-git "diff" "--cached" "--name-only") "")))))

(ert-deftest status-unstages-a-rename-as-a-whole ()
  (test-with-repository
    (test-git "mv" "a.txt" "renamed.txt")
    (test-with-status
      (test-until "renamed    a\\.txt → renamed\\.txt" (ignore))
      (test-go "renamed.txt")
      (test-until (not "Staged") (nebgit-unstage))
      (should (equal (test-git "diff" "--cached" "--name-only") "")))))

;; The position counts where lines repeat.
(ert-deftest status-stages-hunks-among-equal-lines-at-their-position ()
  (test-with-repository
    (let* ((lines (append (make-list 20 "x") '("new") (make-list 10 "x")))
           (text (string-join lines "\n")))
      (apply #'test-commit-file "long.txt" "Long" (make-list 30 "x"))
      (apply #'test-write "long.txt" (append (make-list 8 "y") lines))
      (test-with-status
        (test-go "modified   long.txt")
        (test-until "^\\+new" (nebgit-status-toggle-diff))
        (test-go "+new")
        (test-until "Staged changes (1)" (nebgit-stage))
        (should (equal (test-git "cat-file" "blob" ":long.txt") text))
        (test-git "add" "long.txt")
        (test-until (not "Unstaged") (nebgit-status-refresh))
        (test-go "modified   long.txt")
        (test-until "^\\+y" (nebgit-status-toggle-diff))
        (test-go "+y")
        (test-until "Unstaged changes (1)" (nebgit-unstage))
        (should (equal (test-git "cat-file" "blob" ":long.txt") text))))))

(ert-deftest status-stages-unstages-and-discards-hunks ()
  (test-with-repository
    (apply #'test-commit-file "long.txt" "Long" (mapcar #'number-to-string (number-sequence 1 40)))
    (apply #'test-write "long.txt" "first" (append (mapcar #'number-to-string (number-sequence 2 39))
                                                   '("last")))
    (test-with-status
      (test-go "long.txt")
      (test-until "^@@ .*\n\\(.*\n\\)*@@ " (nebgit-status-toggle-diff))
      (test-go "+last")
      (test-until "Staged changes (1)" (nebgit-stage))
      (should (string-match-p "^\\+last" (test-git "diff" "--cached")))
      (should-not (string-match-p "^\\+first" (test-git "diff" "--cached")))
      (test-until "long\\.txt\n@@ .*\n\\([- +].*\n\\)*\nStaged" (ignore))
      (test-go "Staged changes")
      (nebgit-status-next)
      (test-until "\\+last" (nebgit-status-toggle-diff))
      (test-go "+last")
      (test-until (not "Staged") (nebgit-unstage))
      (test-until "\\+last" (ignore))
      (test-go "+first")
      (test-answering t
        (test-until (not "\\+first") (nebgit-discard))
        (should (string-match-p "Discard this hunk of long.txt" (car questions))))
      (should (equal (substring (test-read "long.txt") 0 2) "1\n"))
      (should (string-suffix-p "last\n" (test-read "long.txt"))))))

(ert-deftest status-discards-only-after-a-yes ()
  (test-with-repository
    (test-write "a.txt" "changed")
    (test-write "new.txt" "x")
    (test-with-status
      (test-go "a.txt")
      (test-answering nil
        (nebgit-discard)
        (test-wait questions)
        (should (equal (car questions) "Lose the changes of a.txt? ")))
      (should (equal (test-read "a.txt") "changed\n"))
      (test-answering t (test-until (not "a\\.txt") (nebgit-discard)))
      (should (equal (test-read "a.txt") "one\ntwo\nthree\n"))
      (test-go "new.txt")
      (test-answering t
        (test-until (not "new\\.txt") (nebgit-discard))
        (should (equal (car questions) "Delete new.txt? ")))
      (should-not (file-exists-p (expand-file-name "new.txt" folder))))))

(ert-deftest status-visits-the-line-of-a-diff ()
  (test-with-repository
    (test-write "a.txt" "one" "two" "three" "four")
    (test-with-status
      (test-go "a.txt")
      (test-until "\\+four" (nebgit-status-toggle-diff))
      (test-go "+four")
      (nebgit-status-visit)
      (should (equal (buffer-file-name) (expand-file-name "a.txt" folder)))
      (should (eql (line-number-at-pos) 4)))))

(ert-deftest status-counts-what-it-does-not-show ()
  (test-with-repository
    (dotimes (n 7) (test-write (format "new%d" n) "x"))
    (let ((nebgit-status-limit 5))
      (test-with-status
        (should (string-match-p "Untracked (7)\n\\(new[0-4]\n\\)\\{5\\}… and 2 more" (test-text)))))))

(ert-deftest status-shows-more-when-asked ()
  (test-with-repository
    (dotimes (n 12) (test-write (format "new%02d" n) "x"))
    (let ((nebgit-status-limit 5))
      (test-with-status
        (test-go "… and 7 more; = shows more")
        (should-error (nebgit-status-visit) :type 'user-error)
        (test-until "Untracked (12)\n\\(new0.\n\\)\\{10\\}… and 2 more"
          (nebgit-status-toggle-diff))
        (should (looking-at-p "new04"))
        (test-go "… and 2 more")
        (test-until (not "…") (nebgit-status-toggle-diff))
        (test-go "Untracked (12)")
        (test-until "Staged changes (12)" (nebgit-stage)))
      (should (eql nebgit-status-limit 5)))))

(ert-deftest status-does-not-read-very-many-changes ()
  (test-with-repository
    (dotimes (n 30) (test-write (format "new%02d" n) "x"))
    (let ((nebgit-status-limit 5))
      (test-with-status
        (should (string-match-p
                 "Untracked (19 or more)\n\\(new0[0-4]\n\\)\\{5\\}… and 14 more" (test-text)))))))

(ert-deftest status-keeps-point-on-its-entry ()
  (test-with-repository
    (test-write "c.txt" "x")
    (test-write "d.txt" "x")
    (test-with-status
      (test-go "d.txt")
      (test-write "0.txt" "x")
      (test-until "0\\.txt" (nebgit-status-refresh))
      (should (looking-at-p "d\\.txt")))))

(ert-deftest status-refreshes-after-saving ()
  (test-with-repository
    (test-with-status
      (let ((status (current-buffer)))
        (with-current-buffer (find-file-noselect "a.txt")
          (insert "x")
          (let ((inhibit-message t)) (save-buffer)))
        (with-current-buffer status
          (test-until "modified   a\\.txt" (ignore)))))))

(ert-deftest status-commits-with-a-message ()
  (test-with-repository
    (test-write "a.txt" "changed")
    (test-git "add" "a.txt")
    (test-with-status
      (nebgit-commit)
      (should (derived-mode-p 'nebgit-commit-mode))
      (insert "Change a\n\nWith a body.\n")
      (nebgit-commit-finish)
      (test-wait (equal (test-git "log" "-1" "--format=%B") "Change a\n\nWith a body.\n"))
      (test-wait (not (get-buffer (format "*nebgit commit: %s*" (directory-file-name folder))))))))

(ert-deftest status-keeps-the-message-of-a-failed-commit ()
  (test-with-repository
    (test-with-status
      (nebgit-commit)
      (insert "Nothing\n")
      (nebgit-commit-finish)
      (test-wait (not nebgit-commit--task))
      (should (equal (test-text) "Nothing\n"))
      (nebgit-commit-give-up)
      (nebgit-commit)
      (nebgit-commit-recall)
      (should (equal (test-text) "Nothing\n")))))

(ert-deftest status-amends-the-last-commit ()
  (test-with-repository
    (test-with-status
      (nebgit-commit-amend)
      (test-wait (equal (string-trim (test-text)) "Second"))
      (insert "The ")
      (nebgit-commit-toggle-sign-off)
      (nebgit-commit-finish)
      (test-wait (string-match-p "\\`The Second\n\nSigned-off-by: Ann"
                                 (test-git "log" "-1" "--format=%B")))
      (should (equal (test-git "rev-list" "--count" "HEAD") "2")))))

(ert-deftest status-stashes-and-pops ()
  (test-with-repository
    (test-write "a.txt" "changed")
    (test-with-status
      (test-until "Stashes (1)\nstash@{0}  On main: later" (nebgit-stash-push "later"))
      (should (equal (test-read "a.txt") "one\ntwo\nthree\n"))
      (test-go "stash@{0}")
      (test-until (not "Stashes") (nebgit-stash-pop))
      (should (equal (test-read "a.txt") "changed\n"))
      (test-until "Stashes (1)" (nebgit-stash-push ""))
      (test-go "stash@{0}")
      (test-answering t (test-until (not "Stashes") (nebgit-discard))))))

(ert-deftest status-drops-no-stash-on-the-heading ()
  (test-with-repository
    (test-write "a.txt" "changed")
    (test-git "stash")
    (test-with-status
      (test-go "Stashes (1)")
      (test-answering t
        (should-error (nebgit-discard) :type 'user-error)
        (should-not questions)))))

(ert-deftest status-switches-creates-merges-and-deletes-branches ()
  (test-with-repository
    (test-with-status
      (test-until "Branch:   topic" (nebgit-create-branch "topic"))
      (test-git "commit" "-q" "--allow-empty" "-m" "On topic")
      (test-answering "main" (test-until "Branch:   main" (nebgit-switch)))
      (test-answering (if (equal (car questions) "Delete the branch: ") "topic" nil)
        (nebgit-delete-branch)
        (test-wait (and (cdr questions) (string-match-p "not merged" (car questions)))))
      (should (string-match-p "topic" (test-git "branch")))
      (test-answering "topic"
        (nebgit-merge)
        (test-wait (equal (test-git "log" "-1" "--format=%s") "On topic"))
        (nebgit-delete-branch)
        (test-wait (not (string-match-p "topic" (test-git "branch"))))))))

(ert-deftest status-finishes-a-merge-with-a-conflict ()
  (test-with-repository
    (test-git "branch" "topic")
    (test-commit-file "a.txt" "Ours" "ours")
    (test-git "checkout" "-q" "topic")
    (test-commit-file "a.txt" "Theirs" "theirs")
    (test-git "checkout" "-q" "main")
    (test-with-status
      (test-answering "topic" (test-until "Unfinished merge" (nebgit-merge)))
      (should (string-match-p "Conflicts (1)\nboth modified a\\.txt" (test-text)))
      (should (string-match-p "Unfinished merge.*: C continue, A abort$" (test-text)))
      (nebgit-skip)
      (test-wait (string-match-p "a merge has no commits to skip" (test-messages)))
      (test-answering t (test-until (not "Unfinished merge") (nebgit-abort)))
      (test-answering "topic" (test-until "Unfinished merge" (nebgit-merge)))
      (test-write "a.txt" "both")
      (test-go "both modified")
      (test-until (not "Conflicts") (nebgit-stage))
      (test-until (not "Unfinished merge") (nebgit-continue))
      (should (string-match-p "Merge branch 'topic'" (test-git "log" "-1" "--format=%s"))))))

(ert-deftest status-asks-nothing-without-an-operation ()
  (test-with-repository
    (test-commit-file "a.txt" "One" "one")
    (test-with-status
      (dolist (action '("skip" "abort"))
        (funcall (intern (concat "nebgit-" action)))
        (test-wait (string-match-p
                    (concat "there is no merge, rebase, cherry-pick or revert to " action)
                    (test-messages)))))))

(defmacro test-with-remote (&rest body)
  "Run BODY in the status of a repository with the empty remote shared.git."
  (declare (indent 0))
  `(test-with-repository
     (test-git "init" "-q" "--bare" "shared.git")
     (test-git "remote" "add" "origin" (expand-file-name "shared.git"))
     (test-write ".git/info/exclude" "shared.git" "second")
     (test-with-status
       ,@body)))

(ert-deftest status-shows-lines-of-the-remote ()
  (test-with-remote
    (test-write-program "shared.git/hooks/post-receive"
                        "#!/bin/sh" "echo 'Create a merge request:'" "printf 'at \\344'")
    (test-until "Upstream: origin/main" (nebgit-push))
    (should (string-match-p (concat "push: main new\nremote: Create a merge request:\n"
                                    "remote: at \\\\344")
                            (test-messages)))
    (should-not (string-match-p "nil nil" (test-messages)))))

(ert-deftest status-pushes-pulls-and-fetches ()
  (test-with-remote
    (test-until "Upstream: origin/main" (nebgit-push))
    (test-git "clone" "-q" "shared.git" "second")
    (let ((test-folder (expand-file-name "second/" folder)))
      (test-commit-file "c.txt" "Third" "c")
      (test-git "push" "-q"))
    (test-until "1 to pull" (nebgit-fetch))
    (test-until (not "to pull") (nebgit-pull))
    (should (equal (test-git "log" "-1" "--format=%s") "Third"))
    (test-git "commit" "-q" "--allow-empty" "-m" "Fourth")
    (test-until "1 to push" (nebgit-status-refresh))
    (test-until (not "to push") (nebgit-push))
    (should (equal (test-git "--git-dir=shared.git" "log" "-1" "--format=%s" "main") "Fourth"))))

(ert-deftest status-handles-hostile-names ()
  (test-with-repository
    (let ((names (mapcar (lambda (name) (decode-coding-string name 'utf-8-unix))
                         '("a b" "\"q\" 'q' $x `y`" "new\nline" "-dash" "b\344r" "*[x]?" ":(top)z"
                           "\303\244\t"))))
      (dolist (name names) (test-write name "1"))
      (test-with-status
        (should (string-match-p "Untracked (8)" (test-text)))
        (should (string-match-p "^new\\\\012line$" (test-text)))
        (should (string-match-p "^b\\\\344r$" (test-text)))
        (test-go "Untracked")
        (test-until "Staged changes (8)" (nebgit-stage))
        (test-git "commit" "-q" "-m" "Names")
        (dolist (name names) (test-write name "2"))
        (test-until "Unstaged changes (8)" (nebgit-status-refresh))
        (dolist (name names)
          (test-go (concat "   " (nebgit-printable name)))
          (test-until "^\\+2" (nebgit-status-toggle-diff))
          (test-go "+2")
          (test-until (not "^\\+2") (nebgit-stage)))
        (should (string-match-p "Staged changes (8)" (test-text)))
        (should (equal (test-git "diff" "--name-only") ""))))))

(ert-deftest status-clones ()
  (test-with-repository
    (save-window-excursion
      (nebgit-clone folder (expand-file-name "copy" folder))
      (test-wait (get-buffer (nebgit--status-name (expand-file-name "copy/" folder))))
      (should (equal (test-read "copy/b.txt") "b\n")))))

(provide 'status-test)
;;; status-test.el ends here
